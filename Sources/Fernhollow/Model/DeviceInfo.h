#pragma once

#include "Support/InternetTime.h"

#include <string>

namespace fernhollow {

/// One of the account's machines, with the names of the wire.
struct DeviceInfo {
    std::string device_id;
    std::string device_name;
    std::string last_seen_at; ///< ISO 8601, UTC

    const std::string& id() const { return device_id; }

    /// When the machine was last seen; the clock's now when that is unknown.
    Instant lastSeenDate(const Clock& clock) const {
        const auto seen = parseInternetTime(last_seen_at);
        return seen ? *seen : clock.now();
    }

    bool operator==(const DeviceInfo&) const = default;
};

} // namespace fernhollow
