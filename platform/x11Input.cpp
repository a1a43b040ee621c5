#include "platform/x11Input.h"

#include "platform/x11.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>
#include <QWindow>

#include <xcb/xinput.h>
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

#include <algorithm>

namespace
{

/// Marks the press of a key that was down in the event's state, where no modifier and no button has this bit.
constexpr quint16 repetitionMark = 0x8000;

/// No window has this number.
constexpr quint32 otherWindow = 0xffffffff;

bool repetitionsAreMarked = false;

/// Tells whether the display has this.
bool makeRepeatsDetectable(xcb_connection_t *display)
{
    constexpr uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    // The toolkit has told the display which version of the extension it uses.
    const replyPointer<xcb_xkb_per_client_flags_reply_t> reply(xcb_xkb_per_client_flags_reply(
        display, xcb_xkb_per_client_flags(display, XCB_XKB_ID_USE_CORE_KBD, flag, flag, 0, 0, 0), nullptr));
    return reply && (reply->value & flag);
}

bool isShown(xcb_window_t id)
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    return std::any_of(windows.begin(), windows.end(), [id](const QWindow *window) {
        return window->isVisible() && window->handle() && window->winId() == id;
    });
}

} // namespace

x11Input::x11Input()
{
    xcb_connection_t *const x11 = x11Display();
    if (!x11)
        return;
    repetitionsAreMarked = makeRepeatsDetectable(x11);
    if (const auto *extension = xcb_get_extension_data(x11, &xcb_input_id); extension && extension->present)
        m_xinput = extension->major_opcode;
    qGuiApp->installNativeEventFilter(this);
    qGuiApp->installEventFilter(this);
}

/// The toolkit hands a press to the window that it counts as the active one by then: one on the dialog would
/// answer the box that has just opened. Keys in a menu are those of the window below it.
bool x11Input::eventFilter(QObject *object, QEvent *event)
{
    if ((event->type() != QEvent::ShortcutOverride && event->type() != QEvent::KeyPress) ||
        !object->isWindowType() || QApplication::activePopupWidget())
        return false;
    const quint32 code = static_cast<QKeyEvent *>(event)->nativeScanCode();
    const quint32 downOn = code < m_downOn.size() ? m_downOn[code] : 0;
    return downOn != 0 && downOn != static_cast<QWindow *>(object)->winId();
}

bool x11Input::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    constexpr uint8_t sentByClient = 0x80;
    switch (static_cast<xcb_generic_event_t *>(message)->response_type & ~sentByClient) {
    case XCB_BUTTON_PRESS:
        return !isShown(static_cast<xcb_button_press_event_t *>(message)->event);
    case XCB_GE_GENERIC: {
        const auto *press = static_cast<xcb_input_button_press_event_t *>(message);
        return m_xinput && press->extension == m_xinput && press->event_type == XCB_INPUT_BUTTON_PRESS &&
               !isShown(press->event);
    }
    case XCB_KEY_PRESS: {
        auto *press = static_cast<xcb_key_press_event_t *>(message);
        return !isWanted(press->detail, press->event, press->state);
    }
    case XCB_KEY_RELEASE:
        m_downOn[static_cast<xcb_key_release_event_t *>(message)->detail] = 0;
        return false;
    case XCB_KEYMAP_NOTIFY:
        takeDown(static_cast<xcb_keymap_notify_event_t *>(message)->keys);
        return false;
    default:
        return false;
    }
}

bool x11Input::isWanted(quint8 keyCode, quint32 window, quint16 &state)
{
    quint32 &downOn = m_downOn[keyCode];
    if (downOn == 0) {
        downOn = window;
        return true;
    }
    state |= repetitionMark;
    return downOn == window;
}

/// `keys` has a bit for each key code but the first eight, which no key has.
void x11Input::takeDown(const quint8 *keys)
{
    for (size_t code = 8; code < m_downOn.size(); ++code) {
        const bool isDown = keys[code / 8 - 1] >> code % 8 & 1;
        if (!isDown)
            m_downOn[code] = 0;
        else if (m_downOn[code] == 0)
            m_downOn[code] = otherWindow;
    }
}

bool isRepetition(const QKeyEvent &event)
{
    return repetitionsAreMarked ? event.nativeModifiers() & repetitionMark : event.isAutoRepeat();
}

void tellHeldKeys(const QWidget &window)
{
    xcb_connection_t *const x11 = x11Display();
    if (!x11 || !window.internalWinId())
        return;
    const auto id = static_cast<xcb_window_t>(window.internalWinId());
    const replyPointer<xcb_get_window_attributes_reply_t> now(
        xcb_get_window_attributes_reply(x11, xcb_get_window_attributes(x11, id), nullptr));
    if (!now)
        return;
    const uint32_t mask = now->your_event_mask | XCB_EVENT_MASK_KEYMAP_STATE;
    xcb_change_window_attributes(x11, id, XCB_CW_EVENT_MASK, &mask);
}
