#include "platform/windowSystem.h"

#include "platform/x11.h"

#include <QApplication>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <string_view>
#include <vector>

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

xcb_atom_t atom(xcb_connection_t *display, std::string_view name)
{
    const replyPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        display, xcb_intern_atom(display, 0, static_cast<uint16_t>(name.size()), name.data()), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// A property that is a list of windows or atoms; empty when there is none.
std::vector<uint32_t> listed(xcb_connection_t *display, xcb_window_t window, std::string_view property)
{
    constexpr uint32_t most = 4096;
    const replyPointer<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        display,
        xcb_get_property(display, 0, window, atom(display, property), XCB_GET_PROPERTY_TYPE_ANY, 0, most),
        nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto *values = static_cast<const uint32_t *>(xcb_get_property_value(reply.get()));
    return {values, values + reply->value_len};
}

/// Whether the user sees it as a window among others: no panel, not minimised or on another desktop.
bool isInTheWay(xcb_connection_t *display, xcb_window_t window)
{
    const replyPointer<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(display, xcb_get_window_attributes(display, window), nullptr));
    if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
        return false;
    const std::vector<uint32_t> types = listed(display, window, "_NET_WM_WINDOW_TYPE");
    return std::find(types.begin(), types.end(), atom(display, "_NET_WM_WINDOW_TYPE_DOCK")) == types.end();
}

xcb_window_t rootOf(xcb_connection_t *display)
{
    return xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
}

/// The window on the screen that has the keyboard; 0 where it is on none, on the root window, or nowhere to
/// be seen.
xcb_window_t keyboardWindow(xcb_connection_t *display)
{
    const replyPointer<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(display, xcb_get_input_focus(display), nullptr));
    if (!focus || focus->focus <= XCB_INPUT_FOCUS_POINTER_ROOT || focus->focus == rootOf(display))
        return XCB_NONE;
    const replyPointer<xcb_get_geometry_reply_t> place(
        xcb_get_geometry_reply(display, xcb_get_geometry(display, focus->focus), nullptr));
    const bool isSeen = place && place->x + place->width > 0 && place->y + place->height > 0;
    return isSeen ? focus->focus : xcb_window_t{XCB_NONE};
}

bool isOwn(xcb_window_t id)
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(),
                       [id](const QWidget *window) { return window->internalWinId() == id; });
}

} // namespace

bool onWayland()
{
    static const bool isWayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    return isWayland;
}

/// The compositor hears of the parent when a window is mapped.
void keepInFront(QWidget *child, const QWidget *parent)
{
    if (!onWayland())
        return;
    const bool wasVisible = child->isVisible();
    child->hide();
    child->winId();
    child->windowHandle()->setTransientParent(parent && parent->isVisible() ? parent->windowHandle()
                                                                            : nullptr);
    child->setVisible(wasVisible);
}

void keepEmptyTitle(QWidget &window)
{
    if (!window.windowTitle().isEmpty())
        return;
    xcb_connection_t *const display = x11Display();
    if (!display)
        return window.setWindowTitle(QStringLiteral(" "));
    const auto id = static_cast<xcb_window_t>(window.internalWinId());
    const auto set = [display, id](xcb_atom_t property, xcb_atom_t type, std::string_view text) {
        xcb_change_property(display, XCB_PROP_MODE_REPLACE, id, property, type, 8,
                            static_cast<uint32_t>(text.size()), text.data());
    };
    static const xcb_atom_t name = atom(display, "_NET_WM_NAME");
    static const xcb_atom_t utf8 = atom(display, "UTF8_STRING");
    set(name, utf8, "");
    // Managers have a name of their own for a framed window that has none at all.
    if (window.windowType() == Qt::Window && !window.windowFlags().testFlag(Qt::FramelessWindowHint))
        set(XCB_ATOM_WM_NAME, XCB_ATOM_STRING, " ");
}

bool bypassesManager(const QWidget &window)
{
    return window.windowFlags().testFlag(Qt::X11BypassWindowManagerHint);
}

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

bool liesInFront(const QWidget &window)
{
    xcb_connection_t *const display = x11Display();
    const auto id = static_cast<xcb_window_t>(window.internalWinId());
    if (!display || !id || !isInTheWay(display, id))
        return false;
    std::vector<uint32_t> stack = listed(display, rootOf(display), "_NET_CLIENT_LIST_STACKING");
    if (std::find(stack.begin(), stack.end(), id) == stack.end())
        return true;
    while (!isOwn(stack.back()) && !isInTheWay(display, stack.back()))
        stack.pop_back();
    return isOwn(stack.back());
}

void setTaskbarProgress(const QWidget &window, int percent)
{
    xcb_connection_t *const display = x11Display();
    if (!display || !window.internalWinId())
        return;
    const auto id = static_cast<xcb_window_t>(window.internalWinId());
    static const xcb_atom_t property = atom(display, "_NET_WM_XAPP_PROGRESS");
    const auto value = static_cast<uint32_t>(percent);
    if (percent < 0)
        xcb_delete_property(display, id, property);
    else
        xcb_change_property(display, XCB_PROP_MODE_REPLACE, id, property, XCB_ATOM_CARDINAL, 32, 1, &value);
    xcb_flush(display);
}

std::vector<uint32_t> managedWindows()
{
    xcb_connection_t *const display = x11Display();
    return display ? listed(display, rootOf(display), "_NET_CLIENT_LIST") : std::vector<uint32_t>();
}

bool newcomerHasKeyboard(const std::vector<uint32_t> &known)
{
    xcb_connection_t *const display = x11Display();
    if (!display)
        return false;
    const xcb_window_t owner = keyboardWindow(display);
    // Programs also give the keyboard to windows within their own.
    for (xcb_window_t window = owner; window != XCB_NONE;) {
        if (isOwn(window) || std::find(known.begin(), known.end(), window) != known.end())
            return false;
        const replyPointer<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(display, xcb_query_tree(display, window), nullptr));
        window = tree ? tree->parent : xcb_window_t{XCB_NONE};
    }
    return owner != XCB_NONE;
}

void takeIdleKeyboard(const QWidget &window)
{
    xcb_connection_t *const display = x11Display();
    if (!display || !window.internalWinId() || keyboardWindow(display) != XCB_NONE)
        return;
    xcb_set_input_focus(display, XCB_INPUT_FOCUS_PARENT, static_cast<xcb_window_t>(window.internalWinId()),
                        XCB_CURRENT_TIME);
    xcb_flush(display);
}
