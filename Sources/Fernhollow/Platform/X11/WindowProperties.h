#pragma once

#include "Platform/Applications/ApplicationResolver.h"
#include "Platform/X11/XcbHandles.h"

#include <xcb/xcb.h>

#include <array>
#include <cstddef>

namespace fernhollow {

/// A property as the server sent it; null when the window has vanished.
using WindowProperty = XcbReply<xcb_get_property_reply_t>;

/// The atoms, on one server, of the window properties that we read.
struct WindowAtoms {
    enum Index : std::size_t {
        activeWindow,
        supportingWmCheck,
        gtkApplicationId,
        kdeDesktopFile,
        processId,
        windowClass,
        clientMachine,
        count
    };
    std::array<xcb_atom_t, count> atoms{};
    using Properties = std::array<WindowProperty, count>;

    xcb_atom_t operator[](Index index) const { return atoms[index]; }
    /// Whether `atom` names one of the properties that identify a window's application.
    bool identifiesApplication(xcb_atom_t atom) const;

    /// Reads all atoms in one round trip.
    static WindowAtoms read(xcb_connection_t* connection);
};

/// The active window (_NET_ACTIVE_WINDOW).
struct ActiveWindow {
    xcb_window_t window = XCB_WINDOW_NONE;
    bool announced = false; ///< true when a window manager announces active windows
};

/// Reads the active window in one round trip.
ActiveWindow readActiveWindow(xcb_connection_t* connection, xcb_window_t root, const WindowAtoms& atoms);

/// What a window's properties say about its program. Properties before gtkApplicationId are ignored.
WindowFacts windowFacts(const WindowAtoms::Properties& properties);

/// Reads a window's facts in one round trip; all are empty for a window that has vanished.
WindowFacts readWindowFacts(xcb_connection_t* connection, xcb_window_t window, const WindowAtoms& atoms);

} // namespace fernhollow
