#include "Platform/X11/StartupNotification.h"

#include "Platform/X11/XcbHandles.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <string>

namespace fernhollow {
namespace {

constexpr std::uint32_t fromAnApplication = 1;
constexpr std::size_t bytesPerMessage = 20;

xcb_client_message_event_t message(std::uint8_t format, xcb_window_t window, xcb_atom_t type) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = format;
    event.window = window;
    event.type = type;
    return event;
}

void send(xcb_connection_t* connection, xcb_window_t root, std::uint32_t mask,
          const xcb_client_message_event_t& event) {
    xcb_send_event(connection, 0, root, mask, reinterpret_cast<const char*>(&event));
}

// A value as the protocol writes it: in quotes, with a backslash before a quote or a backslash.
std::string quoted(std::string_view value) {
    std::string result = "\"";
    for (const char character : value) {
        if (character == '"' || character == '\\') {
            result += '\\';
        }
        result += character;
    }
    return result + '"';
}

} // namespace

std::optional<std::uint32_t> startupTime(std::string_view startupId) {
    constexpr std::string_view mark = "_TIME";
    const auto found = startupId.rfind(mark);
    if (found == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view digits = startupId.substr(found + mark.size());
    const char* const end = std::to_address(digits.end());
    std::uint32_t time = 0;
    const auto [rest, error] = std::from_chars(std::to_address(digits.begin()), end, time);
    return error == std::errc() && rest == end ? std::optional(time) : std::nullopt;
}

void requestActivation(xcb_connection_t* connection, xcb_window_t root, xcb_window_t window,
                       std::uint32_t time) {
    auto event = message(32, window, internAtom(connection, "_NET_ACTIVE_WINDOW"));
    event.data.data32[0] = fromAnApplication;
    event.data.data32[1] = time;
    send(connection, root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT, event);
    xcb_flush(connection);
}

void announceStarted(xcb_connection_t* connection, xcb_window_t root, xcb_window_t window,
                     std::string_view startupId) {
    const std::string text = "remove: ID=" + quoted(startupId) + '\0';
    auto event = message(8, window, internAtom(connection, "_NET_STARTUP_INFO_BEGIN"));
    for (std::size_t begin = 0; begin < text.size(); begin += bytesPerMessage) {
        std::ranges::fill(event.data.data8, 0);
        std::memcpy(event.data.data8, text.data() + begin, std::min(bytesPerMessage, text.size() - begin));
        send(connection, root, XCB_EVENT_MASK_PROPERTY_CHANGE, event);
        event.type = internAtom(connection, "_NET_STARTUP_INFO");
    }
    xcb_flush(connection);
}

} // namespace fernhollow
