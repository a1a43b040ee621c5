#include "dialog/dialogInput.h"

#include "dialog/dialogHost.h"
#include "dialog/dialogLayout.h"
#include "dialog/dialogRun.h"
#include "platform/windowSystem.h"
#include "platform/x11Input.h"
#include "widgets/progressButton.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

#include <utility>

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

/// The button that a key is meant for, null for none, and its slot: for the Hide button the one behind the
/// last.
struct dialogInput::target {
    QPushButton *button = nullptr;
    int slot = -1;
};

dialogInput::dialogInput(QWidget &window, dialogSlots &content, dialogLayout &layout, dialogRun &run,
                         dialogHost &host)
    : m_window(window), m_content(content), m_layout(layout), m_run(run), m_host(host)
{
}

void dialogInput::goOnFrom(const dialogInput &src)
{
    m_buttonPressed = src.m_buttonPressed;
    m_lastPoint = src.m_lastPoint;
    m_heldKeys = src.m_heldKeys;
}

bool dialogInput::press(int slot)
{
    if (m_host.isInputBlocked() || !m_content.buttonVisible[slot])
        return false;
    m_host.clicked(slot);
    return true;
}

void dialogInput::pressHide()
{
    if (!m_host.isInputBlocked())
        m_window.hide();
}

void dialogInput::close()
{
    if (m_host.isInputBlocked())
        return;
    m_window.hide();
    m_host.closed();
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
    if (obj == &m_window) {
        drag(ev);
        forgetInput(ev);
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
    if (ev->type() == QEvent::Show)
        m_isUnasked = onWayland() && m_window.testAttribute(Qt::WA_ShowWithoutActivating);
    // On a busy machine that is long after it was shown.
    else if (ev->type() == QEvent::WindowActivate && std::exchange(m_isUnasked, false))
        m_sinceTyped.start();
}

void dialogInput::drag(QEvent *ev)
{
    switch (ev->type()) {
    case QEvent::MouseButtonPress:
        if (onWayland()) {
            m_window.windowHandle()->startSystemMove();
            break;
        }
        m_buttonPressed = true;
        m_lastPoint = static_cast<QMouseEvent *>(ev)->globalPosition().toPoint() - m_window.pos();
        break;
    case QEvent::MouseMove:
        // Positions in the dialog would be those from before moves that are still under way.
        if (m_buttonPressed) {
            m_window.move(static_cast<QMouseEvent *>(ev)->globalPosition().toPoint() - m_lastPoint);
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
    if (!pressed.button && !m_layout.takesDesktopKeys())
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
        return {m_content.m_hideButton, m_content.maxButtons};
    for (int k = 0; k < m_content.maxButtons; ++k) {
        QPushButton *const button = m_content.buttons[k];
        if (obj == button || (obj == &m_window && button->hasFocus()))
            return {button, k};
    }
    return {};
}

bool dialogInput::act(int key, const target &pressed)
{
    if (m_layout.takesDesktopKeys()) {
        if (key == Qt::Key_Escape)
            return escape(pressed);
        if (m_layout.scroll(key))
            return true;
        if (key == Qt::Key_Space)
            return activate(pressed);
    }
    if (!pressed.button)
        return false;
    QPushButton *next = nullptr;
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Right:
    case Qt::Key_Down:
        next = beside(pressed, 1);
        break;
    case Qt::Key_Backtab:
    case Qt::Key_Left:
    case Qt::Key_Up:
        next = beside(pressed, -1);
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return activate(pressed);
    case Qt::Key_Home:
    case Qt::Key_PageUp:
        next = firstShown(0, 1);
        break;
    case Qt::Key_End:
    case Qt::Key_PageDown:
        next = firstShown(m_content.maxButtons - 1, -1);
        break;
    default:
        return false;
    }
    if (next)
        next->setFocus();
    return true;
}

/// On a button of slots that stand together it means these, else the window.
bool dialogInput::escape(const target &pressed)
{
    const bool isOnButton = pressed.button && pressed.button != m_content.m_hideButton;
    const int leader = isOnButton && pressed.button->isVisible() ? m_content.groupOf(pressed.slot) : -1;
    if (leader < 0) {
        close();
        return true;
    }
    m_host.clicked(leader);
    m_run.willCancel();
    return true;
}

/// From the button of a slot on, up or down the line of all; null where none is shown.
QPushButton *dialogInput::firstShown(int slot, int step) const
{
    for (; slot >= 0 && slot < m_content.maxButtons; slot += step) {
        if (m_content.buttons[slot]->isVisible())
            return m_content.buttons[slot];
    }
    return nullptr;
}

/// Where keys are not the desktop's, a slot that is not shown ends the line.
QPushButton *dialogInput::beside(const target &pressed, int step) const
{
    QPushButton *const hide = m_content.m_hideButton;
    QPushButton *const next = firstShown(pressed.slot + step, step);
    const bool isReached = next && (pressed.button == hide || m_layout.takesDesktopKeys() ||
                                    next == m_content.buttons[pressed.slot + step]);
    return isReached ? next : step > 0 ? hide : nullptr;
}

bool dialogInput::activate(const target &pressed)
{
    if (pressed.button == m_content.m_hideButton) {
        // Where there is no busy window to bring the dialog back, nothing hides it.
        if (!pressed.button->isVisible())
            return false;
        m_window.hide();
        return true;
    }
    if (!pressed.button || !press(pressed.slot))
        return false;
    m_run.willCancel();
    return true;
}
