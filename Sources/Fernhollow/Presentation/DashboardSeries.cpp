#include "Presentation/DashboardSeries.h"

#include "KeypressCore/Calendar.h"

#include <map>
#include <set>

namespace fernhollow::DashboardSeries {
namespace {

using DailyAppStats = AppTracker::DailyAppStats;

/// Looks up the start of a day. It looks up again only when the instant differs from the last one.
class StartOfDay {
public:
    explicit StartOfDay(const Calendar& calendar) : calendar_(calendar.snapshot()) {}

    Instant operator()(Instant instant) {
        if (instant != last_) {
            last_ = instant;
            start_ = calendar_.startOfDay(instant);
        }
        return start_;
    }

private:
    Calendar calendar_;
    Instant last_;
    Instant start_ = calendar_.startOfDay(last_);
};

/// Adds a placeholder for each day up to `today` that is not in `present`.
void addPlaceholders(std::vector<DailyAppStats>& result, const std::set<Instant>& present,
                     const Calendar& steps, StartOfDay& startOfDay, Instant today) {
    for (int age = 0; age < days; ++age) {
        const auto date = steps.addingDays(today, -age);
        if (date && !present.contains(startOfDay(*date))) {
            result.push_back({steps.noon(*date).value_or(*date), placeholder, "", 0});
        }
    }
}

} // namespace

std::vector<DailyAppStats> makeFilledDailyData(const std::vector<DailyAppStats>& daily,
                                               const std::optional<ProductivityMetrics>& metrics,
                                               Instant minValidDate, const Calendar& calendar, Instant now) {
    const Calendar steps = calendar.snapshot();
    StartOfDay startOfDay(calendar);
    const Instant today = startOfDay(now);
    const auto start = steps.addingDays(today, -(days - 1));
    if (!start) {
        return daily;
    }
    const Instant firstDay = startOfDay(*start);
    std::vector<DailyAppStats> result;
    std::set<Instant> present;
    for (const DailyAppStats& record : daily) {
        const Instant day = startOfDay(record.day);
        if (day >= firstDay && day <= today) {
            result.push_back(record);
            present.insert(day);
        }
    }
    if (metrics) {
        const Instant firstValid = startOfDay(minValidDate);
        std::set<Instant> added;
        for (const auto& metric : metrics->monthDaily) {
            const Instant day = startOfDay(metric.day);
            if (day >= firstDay && day <= today && day >= firstValid && !present.contains(day) &&
                metric.count > 0) {
                result.push_back({steps.noon(day).value_or(day), allApps, "All Apps", metric.count});
                added.insert(day);
            }
        }
        present.merge(added);
    }
    addPlaceholders(result, present, steps, startOfDay, today);
    return result;
}

WeekTotals calculateWeekTotals(const std::vector<DailyAppStats>& records, const Calendar& calendar,
                               Instant now) {
    constexpr int week = 7;
    const Calendar steps = calendar.snapshot();
    StartOfDay startOfDay(calendar);
    const Instant today = startOfDay(now);
    if (!steps.addingDays(today, -(2 * week - 1))) {
        return {};
    }
    std::map<Instant, std::int64_t> totals;
    for (const DailyAppStats& record : records) {
        totals[startOfDay(record.day)] += record.count;
    }
    const auto sum = [&](int firstAge) {
        std::int64_t total = 0;
        for (int age = firstAge; age < firstAge + week; ++age) {
            const auto date = steps.addingDays(today, -age);
            const auto found = date ? totals.find(startOfDay(*date)) : totals.end();
            total += found != totals.end() ? found->second : 0;
        }
        return total;
    };
    return {sum(0), sum(week)};
}

double WeekTotals::change() const {
    if (lastWeek < 1) {
        return 0;
    }
    return static_cast<double>(thisWeek - lastWeek) / static_cast<double>(lastWeek) * 100;
}

} // namespace fernhollow::DashboardSeries
