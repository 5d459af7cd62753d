#pragma once

#include "Model/DeviceInfo.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fernhollow {

/// A device's count of one day, as the backend holds it.
struct DeviceCount {
    std::int64_t count = 0;
};

/// The account's total of one day, over all its devices.
struct RemoteDaily {
    std::string day;
    std::int64_t total_count = 0;
};

/// The account's total of one hour.
struct RemoteHour {
    int hour = 0; ///< 0 to 23
    std::int64_t total_count = 0;
};

/// The account's total of one hour and application.
struct RemoteAppHour {
    int hour = 0; ///< 0 to 23
    std::string bundle_id;
    std::string app_name;
    std::int64_t total_count = 0;
};

/// The account's total of one day and application.
struct RemoteAppDaily {
    std::string day;
    std::string bundle_id;
    std::string app_name;
    std::int64_t total_count = 0;
};

/// The backend's answers (JSON, RFC 8259) as records; nothing when one record of an answer is not what it
/// should be. A `total_count` may also be a number in a text; anything else but a whole number is 0 there.
namespace wire {

std::optional<std::int64_t> decodeTotal(std::string_view body);
std::optional<std::vector<DeviceCount>> decodeDeviceCounts(std::string_view body);
std::optional<std::vector<RemoteDaily>> decodeDaily(std::string_view body);
std::optional<std::vector<RemoteHour>> decodeHours(std::string_view body);
std::optional<std::vector<RemoteAppHour>> decodeAppHours(std::string_view body);
std::optional<std::vector<RemoteAppDaily>> decodeAppDaily(std::string_view body);
std::optional<std::vector<DeviceInfo>> decodeDevices(std::string_view body);

} // namespace wire
} // namespace fernhollow
