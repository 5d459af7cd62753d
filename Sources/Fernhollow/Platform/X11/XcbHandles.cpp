#include "Platform/X11/XcbHandles.h"

namespace fernhollow {

XcbConnection connectToDisplay() {
    XcbConnection connection(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(connection.get()) == 0 ? std::move(connection) : nullptr;
}

xcb_window_t rootWindow(xcb_connection_t* connection) {
    int number = 0;
    char* host = nullptr;
    int display = 0;
    if (xcb_parse_display(nullptr, &host, &display, &number) != 0) {
        std::free(host);
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (number-- > 0 && screens.rem > 1) {
        xcb_screen_next(&screens);
    }
    return screens.rem > 0 ? screens.data->root : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name) {
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

bool dropArrivedEvents(xcb_connection_t* connection) {
    while (XcbReply<xcb_generic_event_t>(xcb_poll_for_event(connection))) {
    }
    return xcb_connection_has_error(connection) == 0;
}

} // namespace fernhollow
