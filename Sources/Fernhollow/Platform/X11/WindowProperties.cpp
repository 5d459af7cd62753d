#include "Platform/X11/WindowProperties.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <unistd.h>

namespace fernhollow {
namespace {

constexpr std::array<std::string_view, WindowAtoms::count> names{
    "_NET_ACTIVE_WINDOW",  "_NET_SUPPORTING_WM_CHECK",
    "_GTK_APPLICATION_ID", "_KDE_NET_WM_DESKTOP_FILE",
    "_NET_WM_PID",         "WM_CLASS",
    "WM_CLIENT_MACHINE"};

// Room for a normal class name behind an unusually long instance name.
constexpr std::uint32_t longestPropertyInWords = 4096;

xcb_get_property_cookie_t request(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t atom) {
    return xcb_get_property(connection, 0, window, atom, XCB_GET_PROPERTY_TYPE_ANY, 0,
                            longestPropertyInWords);
}

WindowProperty take(xcb_connection_t* connection, xcb_get_property_cookie_t cookie) {
    xcb_generic_error_t* error = nullptr;
    WindowProperty property(xcb_get_property_reply(connection, cookie, &error));
    const XcbReply<xcb_generic_error_t> ownedError(error); // the window has vanished
    return property;
}

std::string_view bytes(const WindowProperty& property) {
    if (!property || property->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(property.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(property.get()))};
}

std::string text(const WindowProperty& property) {
    const std::string_view value = bytes(property);
    return std::string(value.substr(0, value.find('\0')));
}

std::uint32_t number(const WindowProperty& property) {
    std::uint32_t value = 0;
    if (property && property->format == 32 && xcb_get_property_value_length(property.get()) >= 4) {
        std::memcpy(&value, xcb_get_property_value(property.get()), sizeof(value));
    }
    return value;
}

// A program that does not say where it runs is taken to run here, as nearly all do.
bool isThisMachine(std::string_view machine) {
    std::array<char, HOST_NAME_MAX + 1> buffer{};
    ::gethostname(buffer.data(), buffer.size() - 1);
    const std::string_view own(buffer.data());
    const auto label = [](std::string_view name) { return name.substr(0, name.find('.')); };
    return machine.empty() || machine == own || label(machine) == "localhost" ||
           (label(machine) == label(own) && (label(machine) == machine || label(own) == own));
}

} // namespace

bool WindowAtoms::identifiesApplication(xcb_atom_t atom) const {
    return std::find(atoms.begin() + gtkApplicationId, atoms.end(), atom) != atoms.end();
}

WindowAtoms WindowAtoms::read(xcb_connection_t* connection) {
    std::array<xcb_intern_atom_cookie_t, count> cookies{};
    for (std::size_t index = 0; index < count; ++index) {
        cookies[index] = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(names[index].size()),
                                         names[index].data());
    }
    WindowAtoms result;
    for (std::size_t index = 0; index < count; ++index) {
        const XcbReply<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(connection, cookies[index], nullptr));
        result.atoms[index] = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }
    return result;
}

ActiveWindow readActiveWindow(xcb_connection_t* connection, xcb_window_t root, const WindowAtoms& atoms) {
    const auto activeCookie = request(connection, root, atoms[WindowAtoms::activeWindow]);
    const auto checkCookie = request(connection, root, atoms[WindowAtoms::supportingWmCheck]);
    const WindowProperty active = take(connection, activeCookie);
    const WindowProperty check = take(connection, checkCookie);
    const auto exists = [](const WindowProperty& property) {
        return property && property->type != XCB_ATOM_NONE;
    };
    return {number(active), exists(active) || exists(check)};
}

WindowFacts windowFacts(const WindowAtoms::Properties& properties) {
    WindowFacts facts;
    facts.gtkApplicationId = text(properties[WindowAtoms::gtkApplicationId]);
    facts.kdeDesktopFile = text(properties[WindowAtoms::kdeDesktopFile]);
    const std::string_view instanceAndClass = bytes(properties[WindowAtoms::windowClass]);
    const std::size_t instanceEnd = std::min(instanceAndClass.find('\0'), instanceAndClass.size());
    facts.instance = instanceAndClass.substr(0, instanceEnd);
    const std::string_view rest = instanceAndClass.substr(std::min(instanceEnd + 1, instanceAndClass.size()));
    facts.windowClass = rest.substr(0, rest.find('\0'));
    if (isThisMachine(text(properties[WindowAtoms::clientMachine]))) {
        facts.process = static_cast<pid_t>(number(properties[WindowAtoms::processId]) & INT32_MAX);
    }
    return facts;
}

WindowFacts readWindowFacts(xcb_connection_t* connection, xcb_window_t window, const WindowAtoms& atoms) {
    std::array<xcb_get_property_cookie_t, WindowAtoms::count> cookies{};
    for (std::size_t index = WindowAtoms::gtkApplicationId; index < WindowAtoms::count; ++index) {
        cookies[index] = request(connection, window, atoms.atoms[index]);
    }
    WindowAtoms::Properties properties;
    for (std::size_t index = WindowAtoms::gtkApplicationId; index < WindowAtoms::count; ++index) {
        properties[index] = take(connection, cookies[index]);
    }
    return windowFacts(properties);
}

} // namespace fernhollow
