#include "dialog/dialogInput.h"

#include "dialog/CProgressDialog.h"
#include "dialog/dialogHost.h"
#include "dialog/dialogLayout.h"
#include "platform/wayland.h"
#include "platform/x11Input.h"
#include "widgets/progressButton.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

namespace
{

/// Tells the keys of a keyboard apart; events that come from none have only the name of a key.
quint32 physicalKey(const QKeyEvent &event)
{
    return event.nativeScanCode() ? event.nativeScanCode() : static_cast<quint32>(event.key());
}

/// Keys that move the focus do so again while they are held; the others act when they are let go.
bool actsOnce(int key)
{
    return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape || key == Qt::Key_Space;
}

/// Longer than those who type leave between two keys.
constexpr int pauseMs = 400;

} // namespace

/// The button that a key is meant for, null for none, and its slot (0 for the Hide button).
struct dialogInput::target {
    QPushButton *button = nullptr;
    int slot = -1;
};

dialogInput::dialogInput(CProgressDialog &dialog, dialogSlots &content, dialogLayout &layout,
                         dialogHost &host)
    : m_dialog(dialog), m_content(content), m_layout(layout), m_host(host)
{
}

void dialogInput::goOnFrom(const dialogInput &src)
{
    m_buttonPressed = src.m_buttonPressed;
    m_lastPoint = src.m_lastPoint;
    m_heldKeys = src.m_heldKeys;
}

bool dialogInput::sendClicked(const QObject *button)
{
    for (int k = 0; k < m_content.maxButtons; ++k) {
        if (m_content.buttonVisible[k] && m_content.buttons[k] == button) {
            m_host.clicked(k);
            return true;
        }
    }
    return false;
}

bool dialogInput::filter(QObject *obj, QEvent *ev)
{
    const QEvent::Type type = ev->type();
    const bool isKey = type == QEvent::KeyPress || type == QEvent::KeyRelease;
    // The second press of a double click presses a button as the first does.
    const bool isMousePress = type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick;
    if (m_host.isInputBlocked()) {
        m_buttonPressed = false;
        if (isKey || isMousePress || type == QEvent::Shortcut)
            return true;
    }
    if (obj == &m_dialog) {
        drag(ev);
        forgetInput(ev);
        if (type == QEvent::WinIdChange)
            tellHeldKeys(m_dialog);
    }
    return isKey && (isTypedOn(type) || handleKey(obj, *static_cast<QKeyEvent *>(ev)));
}

/// A compositor may give a window that nobody has asked for the keyboard in the middle of a word. What comes
/// before there is a pause was meant for another window.
bool dialogInput::isTypedOn(QEvent::Type type)
{
    if (!m_sinceTyped.isValid() || m_sinceTyped.hasExpired(pauseMs))
        return false;
    if (type == QEvent::KeyPress)
        m_sinceTyped.start();
    return true;
}

/// What is released elsewhere is never heard of: keys that were down when the keyboard went to another
/// window, and whatever was down when the dialog was hidden.
void dialogInput::forgetInput(QEvent *ev)
{
    if (ev->type() == QEvent::WindowDeactivate || ev->type() == QEvent::Hide)
        m_heldKeys.clear();
    if (ev->type() == QEvent::Hide)
        m_buttonPressed = false;
    if (ev->type() == QEvent::Show && onWayland() && m_dialog.testAttribute(Qt::WA_ShowWithoutActivating))
        m_sinceTyped.start();
}

void dialogInput::drag(QEvent *ev)
{
    switch (ev->type()) {
    case QEvent::MouseButtonPress:
        if (onWayland()) {
            m_dialog.windowHandle()->startSystemMove();
            break;
        }
        m_buttonPressed = true;
        m_lastPoint = static_cast<QMouseEvent *>(ev)->globalPosition().toPoint() - m_dialog.pos();
        break;
    case QEvent::MouseMove:
        // Positions in the dialog would be those from before moves that are still under way.
        if (m_buttonPressed) {
            m_dialog.move(static_cast<QMouseEvent *>(ev)->globalPosition().toPoint() - m_lastPoint);
            m_layout.takeMoved();
        }
        break;
    case QEvent::MouseButtonRelease:
        m_buttonPressed = false;
        break;
    default:
        break;
    }
}

bool dialogInput::handleKey(const QObject *obj, const QKeyEvent &ev)
{
    const target pressed = concernedButton(obj);
    if (!pressed.button && !(ev.key() == Qt::Key_Escape && m_layout.takesDesktopKeys()))
        return false;
    const quint32 key = physicalKey(ev);
    const bool repeats = isRepetition(ev);
    if (ev.type() == QEvent::KeyRelease)
        return !repeats && m_heldKeys.remove(key) && act(ev.key(), pressed);
    // Repetitions come to whichever window has the keyboard.
    if (!repeats)
        m_heldKeys.insert(key);
    else if (m_heldKeys.contains(key) && !actsOnce(ev.key()))
        act(ev.key(), pressed);
    return true;
}

dialogInput::target dialogInput::concernedButton(const QObject *obj) const
{
    if (obj == m_content.m_hideButton || m_content.m_hideButton->hasFocus())
        return {m_content.m_hideButton, 0};
    for (int k = 0; k < m_content.maxButtons; ++k) {
        QPushButton *const button = m_content.buttons[k];
        if (obj == button || (obj == &m_dialog && button->hasFocus()))
            return {button, k};
    }
    return {};
}

bool dialogInput::act(int key, const target &pressed)
{
    if (key == Qt::Key_Escape && m_layout.takesDesktopKeys()) {
        const bool isOnButton = pressed.button && pressed.button != m_content.m_hideButton;
        const int leader = isOnButton && pressed.button->isVisible() ? m_content.groupOf(pressed.slot) : -1;
        if (leader < 0)
            return close();
        m_host.clicked(leader);
        m_dialog.willCancel();
        return true;
    }
    if (!pressed.button)
        return false;
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Right:
    case Qt::Key_Down:
        focusNext(pressed);
        return true;
    case Qt::Key_Backtab:
    case Qt::Key_Left:
    case Qt::Key_Up:
        focusPrevious(pressed);
        return true;
    case Qt::Key_Space:
        return m_layout.takesDesktopKeys() && activate(pressed);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return activate(pressed);
    case Qt::Key_Home:
    case Qt::Key_PageUp:
        focus(firstShownButton());
        return true;
    case Qt::Key_End:
    case Qt::Key_PageDown:
        focus(lastShownButton());
        return true;
    default:
        return false;
    }
}

/// False where there is no such button, or it is not shown.
bool dialogInput::focus(QPushButton *button) const
{
    const bool isShown = button && button->isVisible();
    if (isShown)
        button->setFocus();
    return isShown;
}

/// The slot of the next button, below or above; -1 behind the last. Where keys are the desktop's, those that
/// are not shown do not count.
int dialogInput::neighbour(int slot, int step) const
{
    for (slot += step; slot >= 0 && slot < m_content.maxButtons; slot += step) {
        if (!m_layout.takesDesktopKeys() || m_content.buttonVisible[slot])
            return slot;
    }
    return -1;
}

void dialogInput::focusNext(const target &pressed)
{
    const bool isLast = pressed.button == m_content.m_hideButton;
    const int next = isLast ? -1 : neighbour(pressed.slot, 1);
    if (next < 0 || !focus(m_content.buttons[next]))
        m_content.m_hideButton->setFocus();
}

void dialogInput::focusPrevious(const target &pressed)
{
    if (pressed.slot > 0 && neighbour(pressed.slot, -1) >= 0)
        focus(m_content.buttons[neighbour(pressed.slot, -1)]);
    else if (pressed.button == m_content.m_hideButton)
        focus(lastShownButton());
}

bool dialogInput::activate(const target &pressed)
{
    if (pressed.button == m_content.m_hideButton) {
        // Where there is no busy window to bring the dialog back, nothing hides it.
        if (!pressed.button->isVisible())
            return false;
        m_dialog.hide();
        return true;
    }
    if (!sendClicked(pressed.button))
        return false;
    m_dialog.willCancel();
    return true;
}

bool dialogInput::close()
{
    m_dialog.hide();
    m_host.closed();
    return true;
}

QPushButton *dialogInput::firstShownButton() const
{
    for (int k = 0; k < m_content.maxButtons; ++k) {
        if (m_content.buttons[k]->isVisible())
            return m_content.buttons[k];
    }
    return nullptr;
}

QPushButton *dialogInput::lastShownButton() const
{
    for (int k = m_content.maxButtons - 1; k >= 0; --k) {
        if (m_content.buttons[k]->isVisible())
            return m_content.buttons[k];
    }
    return nullptr;
}
