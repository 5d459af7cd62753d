#pragma once

#include <filesystem>
#include <vector>

namespace fernhollow {

/// The folders with this user's desktop entries, in order of precedence: the data directories of the
/// XDG Base Directory Specification, and the exports of Flatpak and Snap, even where the session's
/// environment lacks them.
std::vector<std::filesystem::path> applicationFolders();

} // namespace fernhollow
