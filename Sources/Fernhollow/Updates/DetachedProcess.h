#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace fernhollow {

/// "NAME=value" each.
using Environment = std::vector<std::string>;

Environment currentEnvironment();

/// `environment` without what an AppImage that is mounted at `appDir` put into it: its own variables, and its
/// folders in lists such as LD_LIBRARY_PATH.
Environment outsideAppImage(const Environment& environment, const std::filesystem::path& appDir);

/// Starts a program, found as an absolute path, in a session of its own, with no file of ours but the
/// standard output, in the root folder, with default signals. Throws std::system_error.
void startDetached(const std::vector<std::string>& command, const Environment& environment);

/// Starts `program` likewise, once this process has ended in whatever way. Later calls change nothing.
void startAfterThisProcess(const std::filesystem::path& program, const Environment& environment);

} // namespace fernhollow
