#pragma once

#include <QDeadlineTimer>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <qwindowdefs.h>

#include <cstdint>
#include <vector>

class QDialog;
class QWidget;

/// Who lies above whom, and who has the keyboard: boxes lie above the dialog and the busy window, the active
/// box above the others; the keyboard belongs to the newest box, and goes back to the dialog when the last
/// one is gone, if the dialog had it when the first one came. Windows are not owned.
class windowOrder : public QObject
{
    Q_OBJECT

public:
    windowOrder();

    /// Shows the dialog in front of other windows, but behind boxes. `takesKeyboard`: from whoever has it.
    void bringToFront(QWidget *dialog, bool takesKeyboard);
    /// Opens `box` in front of everything; `dialog` is the active one, or null.
    void openBox(QDialog *box, const QWidget *dialog);
    /// `box` has been answered and is hidden; `dialog` is the active one, or null.
    void closeBox(QWidget *box, QWidget *dialog);
    /// To be called when a window that bypasses the window manager was shown by itself.
    void keepBelowBoxes() const;
    bool boxIsOpen() const { return !m_boxes.isEmpty(); }

protected:
    /// Watches the boxes: the window manager changes their place after they have been shown.
    bool eventFilter(QObject *window, QEvent *event) override;

private:
    void returnKeyboard();

    /// The open boxes; the one that was active last is the last.
    QList<QWidget *> m_boxes;
    bool m_dialogHadKeyboard = false;
    /// Takes the keyboard back for the dialog once the window manager has seen the last box go.
    QTimer m_returning;
    QPointer<QWidget> m_heir;
    /// Of the open boxes, and of the one that closed last: the toolkit has forgotten it by then.
    QHash<const QWidget *, WId> m_boxWindows;
    WId m_lastBox = 0;
    /// What the manager had when that closed.
    std::vector<uint32_t> m_before;
    QDeadlineTimer m_seeing;
    int m_triesLeft = 0;
};
