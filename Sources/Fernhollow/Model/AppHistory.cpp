#include "Model/AppHistory.h"

#include "KeypressCore/DayKey.h"
#include "Model/TodayCounts.h"
#include "Support/DebugLog.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <tuple>

namespace fernhollow::AppHistory {

using DailyAppStats = AppTracker::DailyAppStats;

std::optional<Instant> normalizedDayDate(std::string_view text, const Calendar& calendar) {
    const auto date = DayKey(normalizedDay(text)).date(calendar);
    return date ? calendar.noon(*date) : std::nullopt;
}

AppDailyCache merged(const AppDailyCache& remote, const AppDailyCache& local, const Calendar& calendar,
                     Instant now) {
    const DayKey today(now, calendar);
    const auto isToday = [&](const std::string& day) {
        const auto date = normalizedDayDate(day, calendar);
        return day == today.rawValue || (date && DayKey(*date, calendar) == today);
    };
    AppDailyCache result;
    for (const auto& [day, apps] : remote) {
        if (!isToday(day)) {
            result.emplace(day, apps);
        }
    }
    for (const auto& [day, apps] : local) {
        if (isToday(day)) {
            continue;
        }
        for (const auto& [bundleId, here] : apps) {
            const auto known = result.find(day);
            const bool isKnown = known != result.end() && known->second.contains(bundleId);
            const std::int64_t there = isKnown ? known->second.at(bundleId).count : 0;
            if (accountWide(here.count, there) != there) { // otherwise the backend's count and name stay
                result[day][bundleId] = here;
            }
        }
    }
    return result;
}

std::vector<DailyAppStats> pastDays(const AppDailyCache& days, Instant minValidDate, const Calendar& calendar,
                                    Instant now, bool logsInvalidDays) {
    const Instant today = calendar.startOfDay(now);
    const Instant first = calendar.startOfDay(minValidDate);
    std::vector<DailyAppStats> records;
    for (const auto& [text, apps] : days) {
        const auto noon = normalizedDayDate(text, calendar);
        if (!noon) {
            if (logsInvalidDays) {
                debugLog("[AppTracker] Skipping invalid dayString: " + text);
            }
            continue;
        }
        const Instant start = calendar.startOfDay(*noon);
        if (start >= today || start < first) {
            continue;
        }
        for (const auto& [bundleId, app] : apps) {
            records.push_back({*noon, bundleId, app.appName, app.count});
        }
    }
    return records;
}

std::string describe(const AppDailyCache& remote) {
    std::size_t entries = 0;
    std::set<std::string_view> apps;
    for (const auto& [day, counts] : remote) {
        entries += counts.size();
        for (const auto& [bundleId, app] : counts) {
            apps.insert(bundleId);
        }
    }
    return std::to_string(remote.size()) + " days, " + std::to_string(entries) + " app entries, " +
           std::to_string(apps.size()) + " unique apps";
}

std::string describeRange(const AppDailyCache& remote) {
    if (remote.empty()) {
        return {};
    }
    const auto [first, last] = std::ranges::minmax_element(
        remote, {}, [](const auto& day) -> const std::string& { return day.first; });
    return first->first + " to " + last->first;
}

bool showsTheSame(const std::vector<DailyAppStats>& a, const std::vector<DailyAppStats>& b,
                  const Calendar& calendar) {
    if (a.size() != b.size()) {
        return false;
    }
    const auto sorted = [](const std::vector<DailyAppStats>& records) {
        std::vector<const DailyAppStats*> order;
        order.reserve(records.size());
        std::ranges::transform(records, std::back_inserter(order),
                               [](const auto& record) { return &record; });
        std::ranges::sort(
            order, {}, [](const DailyAppStats* record) { return std::tie(record->day, record->bundleId); });
        return order;
    };
    return std::ranges::equal(sorted(a), sorted(b), [&](const DailyAppStats* x, const DailyAppStats* y) {
        return x->bundleId == y->bundleId && x->count == y->count &&
               (x->day == y->day || calendar.startOfDay(x->day) == calendar.startOfDay(y->day));
    });
}

} // namespace fernhollow::AppHistory
