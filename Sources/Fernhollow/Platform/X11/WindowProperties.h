#pragma once

#include "Platform/Applications/ApplicationResolver.h"
#include "Platform/X11/XcbHandles.h"

#include <xcb/xcb.h>

#include <array>
#include <cstddef>

namespace fernhollow {

/// A property as the server sent it; null when the window has vanished.
using WindowProperty = XcbReply<xcb_get_property_reply_t>;

/// The names of the window properties that we read, as one server numbers them.
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

    /// In one round trip.
    static WindowAtoms read(xcb_connection_t* connection);
};

/// What the window manager says of the active window.
struct ActiveWindow {
    xcb_window_t window = XCB_WINDOW_NONE;
    bool announced = false; ///< whether there is a window manager that says such things
};

/// In one round trip.
ActiveWindow readActiveWindow(xcb_connection_t* connection, xcb_window_t root, const WindowAtoms& atoms);

/// What a window's properties say of it; those that stand before gtkApplicationId are not looked at.
WindowFacts windowFacts(const WindowAtoms::Properties& properties);

/// In one round trip. Nothing is known of a window that has vanished.
WindowFacts readWindowFacts(xcb_connection_t* connection, xcb_window_t window, const WindowAtoms& atoms);

} // namespace fernhollow
