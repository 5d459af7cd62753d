#pragma once

#include <filesystem>

namespace fernhollow {

/// $HOME, or where that is not set the user's home directory in the password database.
std::filesystem::path homeDirectory();

/// The per-user data directory of the XDG Base Directory Specification: $XDG_DATA_HOME when it is an
/// absolute path, else ".local/share" in the home directory. Throws std::filesystem::filesystem_error
/// when there is no home directory either.
std::filesystem::path applicationSupportDirectory();

/// The same for configuration: $XDG_CONFIG_HOME, else ".config" in the home directory.
std::filesystem::path configurationDirectory();

/// Creates `folder` and the missing folders above it, each with mode 0700. Throws
/// std::filesystem::filesystem_error.
void createPrivateDirectories(const std::filesystem::path& folder);

} // namespace fernhollow
