#include "platform/x11display.h"

#include <memory>
#include <xcb/xcb.h>

QSize x11DisplaySize()
{
    int number = 0;
    // Also one that has failed must be given back.
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, &number), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0)
        return {};
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    for (; screen.rem > 1 && number > 0; --number)
        xcb_screen_next(&screen);
    return screen.rem == 0 ? QSize()
                           : QSize(screen.data->width_in_pixels, screen.data->height_in_pixels);
}
