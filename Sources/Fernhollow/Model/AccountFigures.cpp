#include "Model/AccountFigures.h"

#include "Model/DailyHistory.h"
#include "Model/TodayCounts.h"

#include <algorithm>
#include <iterator>

namespace fernhollow {
namespace {

constexpr std::ptrdiff_t week = 7;

} // namespace

ProductivityMetrics AccountFigures::metrics(const std::vector<RecentDays::Day>& days,
                                            const Calendar& calendar, Instant now) const {
    HourlyCache hours = hourly ? *hourly : HourlyCache();
    for (const HourlyCountRow& row : rows) {
        std::int64_t& count = hours[row.hour];
        count = accountWide(row.count, count);
    }
    std::vector<HourlyCountRow> todayHours;
    for (const auto& [hour, count] : hours) {
        todayHours.push_back({day, hour, count});
    }
    std::vector<DailyCountRow> month;
    for (const RecentDays::Day& each : days) {
        month.push_back({each.key, each.key == day ? today : remoteCount(history, each.key)});
    }
    const auto end = month.end();
    const auto size = std::ssize(month); // less than 30 if the calendar failed for a day
    const std::vector<DailyCountRow> thisWeek(end - std::min(size, week), end);
    const std::vector<DailyCountRow> lastWeek(end - std::min(size, 2 * week), end - std::min(size, week));
    return ProductivityMetrics::calculate(today, todayHours, thisWeek, lastWeek, month, calendar, now);
}

} // namespace fernhollow
