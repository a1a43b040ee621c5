#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <array>

class QKeyEvent;
class QWidget;

/// What the display tells of keys and mouse buttons, put right before the toolkit sees it. Does nothing on
/// other platforms than X11. To be made after the application object, and to go before it.
///
/// Presses on windows that are hidden are kept back. They were under way when the window was hidden; the
/// toolkit would remember it as the window of the last press, beyond its end, and look at it when the next
/// one is hidden.
///
/// A held key repeats as presses, without releases in between, in whichever window has the keyboard by then.
/// The display does not mark these, so for every key that is down it is remembered where it went down;
/// elsewhere its repetitions do not count: a key held in one window is no answer to the box that opens.
class x11Input : public QObject, public QAbstractNativeEventFilter
{
public:
    x11Input();
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    bool isWanted(quint8 keyCode, quint32 window, quint16 &state);
    void takeDown(const quint8 *keys);

    /// By key code: the window that the key went down on, `otherWindow` for one of another program's, 0 for a
    /// key that is up.
    std::array<quint32, 256> m_downOn{};
    int m_xinput = 0; ///< major opcode of the extension that most presses come from; 0 for none
};

/// Whether the key was down already, in the window that the event is for.
bool isRepetition(const QKeyEvent &event);

/// Has the display tell which keys are down whenever `window`, just created, gets the keyboard: those that
/// went down elsewhere repeat, too.
void tellHeldKeys(const QWidget &window);
