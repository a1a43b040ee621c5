#pragma once

#include "server/borrowedKeyboard.h"

#include <QHash>
#include <QList>
#include <QObject>

class QDialog;
class QWidget;

/// Who lies above whom, and who has the keyboard: boxes lie above the dialog and the busy window, the active
/// box above the others; the keyboard belongs to the newest box, and goes back to the dialog when the last
/// one is gone, if the dialog had it when the first one came. Windows are not owned.
class windowOrder : public QObject
{
public:
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
    /// Watches the boxes, whose place the window manager changes after they have been shown, and the dialog,
    /// on which a click takes the keyboard from them; both when they get their windows.
    bool eventFilter(QObject *window, QEvent *event) override;

private:
    /// The open boxes; the one that was active last is the last.
    QList<QWidget *> m_boxes;
    /// Their windows; the toolkit has forgotten a box's by the time that it has been answered.
    QHash<const QWidget *, WId> m_boxWindows;
    borrowedKeyboard m_keyboard;
};
