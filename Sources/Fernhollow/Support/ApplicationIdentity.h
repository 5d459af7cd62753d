#pragma once

#include <string_view>

namespace fernhollow {

/// The reverse-DNS identifier. It is the desktop-file id, the prefix of stored preferences and the bundle
/// identifier.
inline constexpr std::string_view applicationIdentifier = "app.fernhollow.Fernhollow";

inline constexpr std::string_view applicationName = "Fernhollow";

/// The version of this build as people read it, for example "0.1.0"; "0.0.0" when the information dictionary
/// has none.
std::string_view applicationVersion();

} // namespace fernhollow
