#pragma once

#include <string>

namespace fernhollow {

/// One of the account's machines, in the words of the wire.
struct DeviceInfo {
    std::string device_id;
    std::string device_name;
    std::string last_seen_at; ///< ISO 8601, UTC

    const std::string& id() const { return device_id; }
    bool operator==(const DeviceInfo&) const = default;
};

} // namespace fernhollow
