#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace fernhollow {

/// The X server's time of the person's action that `startupId` (Startup Notification Protocol) belongs
/// to. Absent when the id does not contain it.
std::optional<std::uint32_t> startupTime(std::string_view startupId);

/// Asks the window manager to bring `window` to the front (_NET_ACTIVE_WINDOW) because of the person's action
/// at `time`.
void requestActivation(xcb_connection_t* connection, xcb_window_t root, xcb_window_t window,
                       std::uint32_t time);

/// Reports to the launcher that the start that it announced as `startupId` is complete, so that its busy
/// cursor ends.
void announceStarted(xcb_connection_t* connection, xcb_window_t root, xcb_window_t window,
                     std::string_view startupId);

} // namespace fernhollow
