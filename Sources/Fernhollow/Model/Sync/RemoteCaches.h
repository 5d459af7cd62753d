#pragma once

#include "Model/Sync/WireRecords.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace fernhollow {

/// An application's account-wide count, with the name that the backend has for it.
struct RemoteAppCount {
    std::string appName;
    std::int64_t count = 0;

    bool operator==(const RemoteAppCount&) const = default;
};

using RemoteAppCounts = std::unordered_map<std::string, RemoteAppCount>; ///< by bundle identifier

using HistoryCache = std::unordered_map<std::string, std::int64_t>;     ///< by day, "2026-03-05"
using HourlyCache = std::map<int, std::int64_t>;                        ///< by hour
using AppHourlyCache = std::map<int, RemoteAppCounts>;                  ///< by hour
using AppDailyCache = std::unordered_map<std::string, RemoteAppCounts>; ///< by day

/// The day of a day or date-time text: "2026-03-05T00:00:00" is 2026-03-05.
std::string normalizedDay(std::string_view text);

// Of rows with the same keys the last one counts.
HistoryCache historyCache(const std::vector<RemoteDaily>& rows);
HourlyCache hourlyCache(const std::vector<RemoteHour>& rows);
AppHourlyCache appHourlyCache(const std::vector<RemoteAppHour>& rows);
AppDailyCache appDailyCache(const std::vector<RemoteAppDaily>& rows);

} // namespace fernhollow
