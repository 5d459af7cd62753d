#include "Model/ProductivityMetrics.h"

#include "KeypressCore/Calendar.h"

#include <algorithm>

namespace fernhollow {
namespace {

constexpr std::size_t hoursOfADay = 24;
constexpr std::size_t week = 7;

/// One day with its 12:00 and the count to use for it.
struct Day {
    std::optional<Instant> date;
    std::int64_t count = 0;
};

void addHours(ProductivityMetrics& metrics, const std::vector<HourlyCountRow>& todayHourly) {
    std::int64_t highest = 0;
    for (const HourlyCountRow& row : todayHourly) {
        metrics.todayHourly.push_back({row.hour, row.count});
        metrics.activeHours += row.count >= 1 ? 1 : 0;
        if (row.count > highest) {
            highest = row.count;
            metrics.peakHour = row.hour;
        }
    }
    while (metrics.todayHourly.size() < hoursOfADay) {
        metrics.todayHourly.push_back({static_cast<int>(metrics.todayHourly.size()), 0});
    }
}

double average(std::int64_t total, std::size_t parts) {
    return parts == 0 ? 0.0 : static_cast<double>(total) / static_cast<double>(parts);
}

} // namespace

ProductivityMetrics ProductivityMetrics::calculate(std::int64_t todayTotal,
                                                   const std::vector<HourlyCountRow>& todayHourly,
                                                   const std::vector<DailyCountRow>& /*thisWeekDaily*/,
                                                   const std::vector<DailyCountRow>& /*lastWeekDaily*/,
                                                   const std::vector<DailyCountRow>& monthDaily,
                                                   const Calendar& calendar, Instant now) {
    ProductivityMetrics metrics;
    metrics.todayTotal = todayTotal;
    addHours(metrics, todayHourly);
    const Calendar steps = calendar.snapshot();
    const Instant today = steps.startOfDay(now);
    const auto asShown = [&](const DailyCountRow& row) {
        const auto date = row.day.date(steps);
        return Day{date, date && steps.startOfDay(*date) == today ? todayTotal : row.count};
    };
    for (const DailyCountRow& row : monthDaily) {
        const Day day = asShown(row);
        metrics.monthTotal += day.count;
        if (day.date) {
            metrics.monthDaily.push_back({*day.date, day.count});
        }
    }

    auto sorted = monthDaily;
    std::ranges::sort(sorted, {}, &DailyCountRow::day);
    const std::size_t count = sorted.size();
    const std::size_t thisWeek = count - std::min(count, week);
    const std::size_t lastWeek = count - std::min(count, 2 * week);
    for (std::size_t i = lastWeek; i < count; ++i) {
        if (i < thisWeek) {
            metrics.lastWeekTotal += sorted[i].count;
        } else {
            metrics.weekTotal += asShown(sorted[i]).count;
        }
    }

    metrics.avgPerHour = average(todayTotal, static_cast<std::size_t>(metrics.activeHours));
    metrics.avgPerDay = average(metrics.monthTotal, count);
    return metrics;
}

} // namespace fernhollow
