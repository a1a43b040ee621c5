#pragma once

#include <QElapsedTimer>
#include <QEvent>
#include <QPoint>
#include <QSet>

class QKeyEvent;
class QObject;
class QPushButton;
class QWidget;
class dialogHost;
class dialogLayout;
class dialogRun;
struct dialogSlots;

/// What the user does to a dialog: moves it by dragging, moves the focus along its buttons with keys, and
/// presses them. The dialog hands it the events of itself and of its buttons before they handle them. Nothing
/// is owned, and all that is referred to outlives it.
///
/// The focus moves along one line: the slots' buttons in order, then the "Hide" button. Keys act when they
/// are let go, and only those whose press the dialog saw: otherwise the key that answers a box would press a
/// button of the dialog with its release.
class dialogInput
{
public:
    dialogInput(QWidget &window, dialogSlots &content, dialogLayout &layout, dialogRun &run,
                dialogHost &host);
    Q_DISABLE_COPY_MOVE(dialogInput)

    /// Tells whether the event goes no further.
    bool filter(QObject *obj, QEvent *ev);
    /// The dialog is a copy of that of `src`: keys and mouse buttons that are down are down on it.
    void goOnFrom(const dialogInput &src);

    // By whatever means: screen readers press buttons without keys and mouse.
    /// The button of a slot, if it is shown; tells whether it is.
    bool press(int slot);
    void pressHide();
    /// The user closes the window.
    void close();

private:
    struct target;

    bool isTypedOn(QEvent::Type type);
    void drag(QEvent *ev);
    void forgetInput(QEvent *ev);
    target concernedButton(const QObject *obj) const;
    bool handleKey(const QObject *obj, const QKeyEvent &ev);
    bool act(int key, const target &pressed);
    bool escape(const target &pressed);
    bool activate(const target &pressed);
    QPushButton *firstShown(int slot, int step) const;
    QPushButton *beside(const target &pressed, int step) const;

    QWidget &m_window;
    dialogSlots &m_content;
    dialogLayout &m_layout;
    dialogRun &m_run;
    dialogHost &m_host;

    /// Dragging: a mouse button is held on the dialog, and where on it, in pixels, it went down.
    bool m_buttonPressed = false;
    QPoint m_lastPoint;
    /// The keys that went down on the dialog, or on one that it is a copy of, and are still held; by scan
    /// code.
    QSet<quint32> m_heldKeys;
    /// The dialog appeared unasked, and has not had the keyboard since.
    bool m_isUnasked = false;
    /// Since it got the keyboard then, or since what was typed on then.
    QElapsedTimer m_sinceTyped;
};
