#include "Model/Sync/RemoteCaches.h"

namespace fernhollow {

std::string normalizedDay(std::string_view text) {
    constexpr std::size_t dayLength = 10;
    return std::string(text.substr(0, dayLength));
}

HistoryCache historyCache(const std::vector<RemoteDaily>& rows) {
    HistoryCache cache;
    for (const auto& row : rows) {
        cache[normalizedDay(row.day)] = row.total_count;
    }
    return cache;
}

HourlyCache hourlyCache(const std::vector<RemoteHour>& rows) {
    HourlyCache cache;
    for (const auto& row : rows) {
        cache[row.hour] = row.total_count;
    }
    return cache;
}

AppHourlyCache appHourlyCache(const std::vector<RemoteAppHour>& rows) {
    AppHourlyCache cache;
    for (const auto& row : rows) {
        cache[row.hour][row.bundle_id] = {row.app_name, row.total_count};
    }
    return cache;
}

AppDailyCache appDailyCache(const std::vector<RemoteAppDaily>& rows) {
    AppDailyCache cache;
    for (const auto& row : rows) {
        cache[normalizedDay(row.day)][row.bundle_id] = {row.app_name, row.total_count};
    }
    return cache;
}

} // namespace fernhollow
