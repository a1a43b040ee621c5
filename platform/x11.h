#pragma once

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

struct replyDeleter {
    void operator()(void *reply) const { std::free(reply); }
};
/// Null where the display has answered with an error.
template <class Reply> using replyPointer = std::unique_ptr<Reply, replyDeleter>;

/// The toolkit's connection to the display; null on other platforms than X11.
inline xcb_connection_t *x11Display()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}
