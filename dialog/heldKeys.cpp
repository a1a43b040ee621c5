#include "dialog/heldKeys.h"

#include <QGuiApplication>
#include <QKeyEvent>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <utility>

namespace
{

/// Tells the keys of a keyboard apart; events that come from none have only the name of a key.
quint32 physicalKey(const QKeyEvent &event)
{
    return event.nativeScanCode() ? event.nativeScanCode() : static_cast<quint32>(event.key());
}

struct freeDeleter {
    void operator()(void *memory) const { std::free(memory); }
};

/// Whether the display knows the key to be down.
bool isDown(quint32 scanCode)
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    constexpr quint32 mostScanCode = 255;
    if (!x11 || scanCode == 0 || scanCode > mostScanCode)
        return false;
    xcb_connection_t *display = x11->connection();
    const std::unique_ptr<xcb_query_keymap_reply_t, freeDeleter> keymap(
        xcb_query_keymap_reply(display, xcb_query_keymap(display), nullptr));
    return keymap && (keymap->keys[scanCode / 8] >> scanCode % 8 & 1);
}

} // namespace

std::optional<keyStroke> heldKeys::pressed(const QKeyEvent &event)
{
    const quint32 physical = physicalKey(event);
    const bool decides = std::exchange(m_undecided, 0) == physical;
    const bool repeats = event.isAutoRepeat() || (decides && event.timestamp() == m_undecidedTime);
    std::optional<keyStroke> stroke;
    if (const auto held = m_held.constFind(physical); decides && held != m_held.constEnd())
        stroke = {*held, repeats};
    // Repetitions come to whichever window has the keyboard.
    if (!repeats)
        m_held.insert(physical, event.key());
    return stroke;
}

std::optional<keyStroke> heldKeys::released(const QKeyEvent &event)
{
    const quint32 physical = physicalKey(event);
    if (!event.isAutoRepeat() && isDown(event.nativeScanCode())) {
        m_undecided = physical;
        m_undecidedTime = event.timestamp();
        return {};
    }
    const auto held = m_held.constFind(physical);
    if (held == m_held.constEnd())
        return {};
    const keyStroke stroke{*held, event.isAutoRepeat()};
    if (!stroke.isRepetition)
        m_held.erase(held);
    return stroke;
}

void heldKeys::clear()
{
    m_held.clear();
    m_undecided = 0;
}
