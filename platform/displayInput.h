#pragma once

#include <QAbstractNativeEventFilter>

#include <bitset>

class QKeyEvent;
class QWidget;

/// What the display tells of keys and mouse buttons, put right before the toolkit sees it. Does nothing on
/// other platforms than X11. To be made after the application object, and to go before it.
///
/// Presses on windows that are hidden are kept back. They were under way when the window was hidden; the
/// toolkit would remember it as the window of the last press, beyond its end, and look at it when the next
/// one is hidden.
///
/// A held key repeats as presses, without releases in between. The display does not mark these, so every key
/// that is down is remembered, whichever window it went down on.
class displayInput : public QAbstractNativeEventFilter
{
public:
    displayInput();
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    std::bitset<256> m_down; ///< by key code
    int m_xinput = 0;        ///< major opcode of the extension that most presses come from; 0 for none
};

/// Whether the key was down already.
bool isRepetition(const QKeyEvent &event);

/// Has the display tell which keys are down whenever `window`, just created, gets the keyboard: those that
/// went down elsewhere repeat, too.
void tellHeldKeys(const QWidget &window);
