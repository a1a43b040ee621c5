#include "progressctl/screen.h"

#include <cstdlib>
#include <memory>
#include <xcb/randr.h>
#include <xcb/xcb.h>

namespace
{

struct freeDeleter {
    void operator()(void *memory) const { std::free(memory); }
};
struct disconnecter {
    void operator()(xcb_connection_t *display) const { xcb_disconnect(display); }
};
template <typename Reply> using reply = std::unique_ptr<Reply, freeDeleter>;

std::optional<screenArea> primaryMonitor(xcb_connection_t *display, xcb_window_t root)
{
    // The request is of version 1.5; asking an older server for it would only waste the reply.
    const auto *extension = xcb_get_extension_data(display, &xcb_randr_id);
    if (!extension || !extension->present)
        return std::nullopt;
    const reply<xcb_randr_query_version_reply_t> version(
        xcb_randr_query_version_reply(display, xcb_randr_query_version(display, 1, 5), nullptr));
    if (!version || version->major_version < 1 || (version->major_version == 1 && version->minor_version < 5))
        return std::nullopt;
    const reply<xcb_randr_get_monitors_reply_t> monitors(
        xcb_randr_get_monitors_reply(display, xcb_randr_get_monitors(display, root, 1), nullptr));
    if (!monitors)
        return std::nullopt;
    std::optional<screenArea> found;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(monitors.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each)) {
        if (!found || each.data->primary)
            found = screenArea{each.data->x, each.data->y, each.data->width, each.data->height};
    }
    return found;
}

} // namespace

std::optional<screenArea> findPrimaryScreen()
{
    int number = 0;
    const std::unique_ptr<xcb_connection_t, disconnecter> display(xcb_connect(nullptr, &number));
    if (xcb_connection_has_error(display.get()))
        return std::nullopt;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(display.get()));
    for (; number > 0 && screens.rem > 1; --number)
        xcb_screen_next(&screens);
    if (screens.rem == 0)
        return std::nullopt;
    if (const auto monitor = primaryMonitor(display.get(), screens.data->root))
        return monitor;
    return screenArea{0, 0, screens.data->width_in_pixels, screens.data->height_in_pixels};
}
