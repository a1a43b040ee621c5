#include "platform/stacking.h"

#include <QGuiApplication>
#include <QWidget>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace
{

struct freeDeleter {
    void operator()(void *reply) const { std::free(reply); }
};

/// The child of the root window that `window` is, or lies in; 0 when it is gone.
xcb_window_t outermost(xcb_connection_t *display, xcb_window_t window)
{
    for (;;) {
        const std::unique_ptr<xcb_query_tree_reply_t, freeDeleter> tree(
            xcb_query_tree_reply(display, xcb_query_tree(display, window), nullptr));
        if (!tree || tree->parent == tree->root)
            return tree ? window : XCB_NONE;
        window = tree->parent;
    }
}

} // namespace

void putBelow(const QWidget *window, const QWidget *other)
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection() || !window->internalWinId() || !other->internalWinId())
        return;
    xcb_connection_t *display = x11->connection();
    const xcb_window_t sibling = outermost(display, static_cast<xcb_window_t>(other->internalWinId()));
    if (sibling == XCB_NONE)
        return;
    const uint32_t values[] = {sibling, XCB_STACK_MODE_BELOW};
    xcb_configure_window(display, static_cast<xcb_window_t>(window->internalWinId()),
                         XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, values);
    xcb_flush(display);
}
