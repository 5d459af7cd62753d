#pragma once

#include <string_view>

namespace fernhollow {

/// Appends one time-stamped line to "fernhollow_debug.log" in the user's home directory.
///
/// All diagnostics of the program go there. It never throws, and a line that cannot be written is lost.
/// Messages begin with their component in square brackets. A message may have several lines. A line feed
/// that would make one of them look like an entry is written as "\n", other control characters as "\x1B".
/// Any thread may call it.
void debugLog(std::string_view message);

} // namespace fernhollow
