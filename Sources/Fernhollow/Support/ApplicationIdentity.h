#pragma once

#include <string_view>

namespace fernhollow {

/// The reverse-DNS identifier: desktop-file id, prefix of the stored preferences, bundle identifier.
inline constexpr std::string_view applicationIdentifier = "app.fernhollow.Fernhollow";

inline constexpr std::string_view applicationName = "Fernhollow";

/// The version of this build as people read it, for example "0.1.0"; "0.0.0" when the information dictionary
/// does not tell it.
std::string_view applicationVersion();

} // namespace fernhollow
