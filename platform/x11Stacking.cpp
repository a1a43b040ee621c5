#include "platform/x11Stacking.h"

#include "platform/x11.h"

#include <QWidget>

namespace
{

/// The child of the root window that `window` is, or lies in; 0 when it is gone.
xcb_window_t outermost(xcb_connection_t *display, xcb_window_t window)
{
    for (;;) {
        const replyPointer<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(display, xcb_query_tree(display, window), nullptr));
        if (!tree || tree->parent == tree->root)
            return tree ? window : XCB_NONE;
        window = tree->parent;
    }
}

} // namespace

void putBelow(const QWidget *window, const QWidget *other)
{
    xcb_connection_t *const display = x11Display();
    if (!display || !window->internalWinId() || !other->internalWinId())
        return;
    const xcb_window_t sibling = outermost(display, static_cast<xcb_window_t>(other->internalWinId()));
    if (sibling == XCB_NONE)
        return;
    const uint32_t values[] = {sibling, XCB_STACK_MODE_BELOW};
    xcb_configure_window(display, static_cast<xcb_window_t>(window->internalWinId()),
                         XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, values);
    xcb_flush(display);
}
