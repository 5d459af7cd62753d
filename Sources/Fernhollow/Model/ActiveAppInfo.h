#pragma once

#include <string>

namespace fernhollow {

/// The application that was in front when a key was pressed.
struct ActiveAppInfo {
    std::string bundleId; ///< "unknown" when there was none
    std::string appName;

    bool operator==(const ActiveAppInfo&) const = default;
};

} // namespace fernhollow
