#pragma once

#include <string>
#include <variant>

namespace fernhollow {

struct UpdateIdle {
    bool operator==(const UpdateIdle&) const = default;
};
struct UpdateChecking {
    bool operator==(const UpdateChecking&) const = default;
};
struct UpdateAvailable {
    std::string version; ///< as people read it
    bool operator==(const UpdateAvailable&) const = default;
};
struct UpdateDownloading {
    double progress = 0; ///< from 0 to 1
    bool operator==(const UpdateDownloading&) const = default;
};
struct UpdateReadyToInstall {
    bool operator==(const UpdateReadyToInstall&) const = default;
};
struct UpdateUpToDate {
    bool operator==(const UpdateUpToDate&) const = default;
};
struct UpdateFailed {
    std::string message;
    bool operator==(const UpdateFailed&) const = default;
};

/// How far the search for a newer release, or its download, has come.
using UpdateState = std::variant<UpdateIdle, UpdateChecking, UpdateAvailable, UpdateDownloading,
                                 UpdateReadyToInstall, UpdateUpToDate, UpdateFailed>;

/// For the log: the case's name with its value in parentheses, for example "downloading(progress: 0.0)".
std::string describe(const UpdateState& state);

} // namespace fernhollow
