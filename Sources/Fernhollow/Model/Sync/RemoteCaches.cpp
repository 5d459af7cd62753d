#include "Model/Sync/RemoteCaches.h"

#include "KeypressCore/CountLimits.h"

#include <algorithm>

namespace fernhollow {

std::string normalizedDay(std::string_view text) {
    constexpr std::size_t dayLength = 10;
    std::size_t end = std::min(dayLength, text.size());
    while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) {
        --end; // it is not a day, but it has to stay UTF-8 where it is logged
    }
    return std::string(text.substr(0, end));
}

HistoryCache historyCache(const std::vector<RemoteDaily>& rows) {
    HistoryCache cache;
    for (const auto& row : rows) {
        cache[normalizedDay(row.day)] = believable(row.total_count, maximumAccountDay);
    }
    return cache;
}

HourlyCache hourlyCache(const std::vector<RemoteHour>& rows) {
    HourlyCache cache;
    for (const auto& row : rows) {
        cache[row.hour] = believable(row.total_count, maximumAccountRow);
    }
    return cache;
}

AppHourlyCache appHourlyCache(const std::vector<RemoteAppHour>& rows) {
    AppHourlyCache cache;
    for (const auto& row : rows) {
        cache[row.hour][row.bundle_id] = {row.app_name, believable(row.total_count, maximumAccountRow)};
    }
    return cache;
}

AppDailyCache appDailyCache(const std::vector<RemoteAppDaily>& rows) {
    AppDailyCache cache;
    for (const auto& row : rows) {
        cache[normalizedDay(row.day)][row.bundle_id] = {row.app_name,
                                                        believable(row.total_count, maximumAccountRow)};
    }
    return cache;
}

} // namespace fernhollow
