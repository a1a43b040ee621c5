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
    const bool decides = m_undecided == physical && event.timestamp() == m_undecidedTime;
    const bool repeats = event.isAutoRepeat() || decides;
    const std::optional<keyStroke> stroke = decide(decides);
    // Repetitions come to whichever window has the keyboard.
    if (!repeats)
        m_held.insert(physical, event.key());
    return stroke;
}

std::optional<keyStroke> heldKeys::released(const QKeyEvent &event)
{
    const quint32 physical = physicalKey(event);
    if (!event.isAutoRepeat() && isDown(event.nativeScanCode())) {
        const std::optional<keyStroke> former = decide(false);
        m_undecided = physical;
        m_undecidedTime = event.timestamp();
        return former;
    }
    const auto held = m_held.constFind(physical);
    if (held == m_held.constEnd())
        return {};
    const keyStroke stroke{*held, event.isAutoRepeat()};
    if (!stroke.isRepetition)
        m_held.erase(held);
    return stroke;
}

/// What the undecided release was, if there is one: a repetition, or the real end of a stroke whose key has
/// gone down again since.
std::optional<keyStroke> heldKeys::decide(bool isRepetition)
{
    const auto held = m_held.constFind(std::exchange(m_undecided, 0));
    if (held == m_held.constEnd())
        return {};
    const keyStroke stroke{*held, isRepetition};
    if (!isRepetition)
        m_held.erase(held);
    return stroke;
}

void heldKeys::clear()
{
    m_held.clear();
    m_undecided = 0;
}
