#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace fernhollow {

/// When, by the X server's clock, the person did what `startupId` belongs to. Absent when the id does not
/// tell.
std::optional<std::uint32_t> startupTime(std::string_view startupId);

/// Asks the window manager to bring `window` to the front for what the person did at `time`.
void requestActivation(xcb_connection_t* connection, xcb_window_t root, xcb_window_t window,
                       std::uint32_t time);

/// Tells the launcher that what it announced as `startupId` has come up, so that its busy cursor ends.
void announceStarted(xcb_connection_t* connection, xcb_window_t root, xcb_window_t window,
                     std::string_view startupId);

} // namespace fernhollow
