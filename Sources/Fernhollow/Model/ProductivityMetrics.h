#pragma once

#include "KeypressCore/Records.h"
#include "Support/Clock.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace fernhollow {

class Calendar;

/// The dashboard's figures of the account's presses: today by hour, the last weeks, the month.
struct ProductivityMetrics {
    struct HourlyMetric {
        int hour = 0; ///< 0 to 23
        std::int64_t count = 0;

        int id() const { return hour; }
        bool operator==(const HourlyMetric&) const = default;
    };

    struct DailyMetric {
        Instant day; ///< 12:00 of the day
        std::int64_t count = 0;

        Instant id() const { return day; }
        bool operator==(const DailyMetric&) const = default;
    };

    std::int64_t todayTotal = 0;
    std::vector<HourlyMetric> todayHourly; ///< at least 24
    std::int64_t weekTotal = 0;            ///< the last seven days, today included
    std::int64_t lastWeekTotal = 0;        ///< the seven days before those
    std::int64_t monthTotal = 0;           ///< the last 30 days, today included
    std::vector<DailyMetric> monthDaily;   ///< those 30 days
    double avgPerHour = 0;                 ///< over today's active hours; 0 without one
    double avgPerDay = 0;                  ///< over all days of the month, even without a press
    std::optional<int> peakHour;           ///< the first of today's hours with the highest count
    int activeHours = 0;                   ///< today's hours with a press

    bool operator==(const ProductivityMetrics&) const = default;

    /// `todayHourly` is in the order of hours, `monthDaily` in any order; for today `todayTotal` replaces
    /// its row there. The week totals come from `monthDaily`; the two lists of weeks are not read. `now`
    /// decides which day is today in `calendar`.
    static ProductivityMetrics calculate(std::int64_t todayTotal,
                                         const std::vector<HourlyCountRow>& todayHourly,
                                         const std::vector<DailyCountRow>& thisWeekDaily,
                                         const std::vector<DailyCountRow>& lastWeekDaily,
                                         const std::vector<DailyCountRow>& monthDaily,
                                         const Calendar& calendar, Instant now);
};

} // namespace fernhollow
