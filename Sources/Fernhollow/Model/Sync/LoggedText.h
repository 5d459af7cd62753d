#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace fernhollow {

/// An answer as far as the log takes it: its first `characters` code points, so that a server that sends
/// pages instead of records does not fill the disk. Nothing when it is not UTF-8.
std::optional<std::string> loggedText(std::string_view body, std::size_t characters = 16'384);

} // namespace fernhollow
