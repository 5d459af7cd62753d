#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace fernhollow {

/// Variables, each as "NAME=value".
using Environment = std::vector<std::string>;

Environment currentEnvironment();

/// `environment` without the additions of an AppImage that is mounted at `appDir`: its own variables, and its
/// folders in lists such as LD_LIBRARY_PATH.
Environment outsideAppImage(const Environment& environment, const std::filesystem::path& appDir);

/// Starts a program, whose path is absolute, in a session of its own and in the root folder, with
/// default signals, empty input, and none of our open files but the standard output and error.
/// Throws std::system_error.
void startDetached(const std::vector<std::string>& command, const Environment& environment);

/// Starts `program` in the same way once this process has ended, for whatever reason. Later calls do nothing.
void startAfterThisProcess(const std::filesystem::path& program, const Environment& environment);

} // namespace fernhollow
