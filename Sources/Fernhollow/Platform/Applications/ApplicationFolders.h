#pragma once

#include <filesystem>
#include <vector>

namespace fernhollow {

/// The folders that hold this user's desktop entries, the one that wins first: the data directories of
/// the XDG Base Directory Specification, and the exports of Flatpak and Snap even where a session's
/// environment lacks them.
std::vector<std::filesystem::path> applicationFolders();

} // namespace fernhollow
