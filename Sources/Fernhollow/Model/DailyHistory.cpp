#include "Model/DailyHistory.h"

#include "Model/TodayCounts.h"

#include <map>

namespace fernhollow {

std::vector<DailyCountPoint> DailyHistory::points(const std::vector<RecentDays::Day>& days) const {
    std::map<DayKey, std::int64_t> here;
    for (const DailyCountRow& row : rows) {
        here.emplace(row.day, row.count);
    }
    std::vector<DailyCountPoint> points;
    for (const RecentDays::Day& each : days) {
        if (each.noon >= first) {
            // A day that neither this machine nor the backend knows, or whose count at the backend is
            // negative, has no presses.
            const std::int64_t past = accountWide(here[each.key], remoteCount(remote, each.key));
            points.push_back({each.noon, each.key == day ? today : accountWide(past, 0)});
        }
    }
    return points;
}

std::int64_t remoteCount(const std::shared_ptr<const HistoryCache>& counts, const DayKey& day) {
    if (!counts) {
        return 0;
    }
    const auto found = counts->find(day.rawValue);
    return found != counts->end() ? found->second : 0;
}

} // namespace fernhollow
