#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace fernhollow {

struct XcbDisconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using XcbConnection = std::unique_ptr<xcb_connection_t, XcbDisconnect>;

struct XcbFree {
    void operator()(void* memory) const { std::free(memory); }
};

/// Owns a reply, an event or an error from libxcb.
template<typename T>
using XcbReply = std::unique_ptr<T, XcbFree>;

/// A connection to $DISPLAY; null when the display cannot be reached.
XcbConnection connectToDisplay();

/// The root window of the screen that $DISPLAY names.
xcb_window_t rootWindow(xcb_connection_t* connection);

/// The atom of a name; XCB_ATOM_NONE when the server does not answer. One round trip.
xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name);

/// Discards the events that have arrived, without waiting. False when the connection to the server is lost.
bool dropArrivedEvents(xcb_connection_t* connection);

} // namespace fernhollow
