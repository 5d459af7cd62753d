#pragma once

#include "Model/AppTracker.h"
#include "Model/ProductivityMetrics.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace fernhollow {

/// Functions of values that make the dashboard's series of days. `now` decides which day is today
/// in `calendar`.
namespace DashboardSeries {

constexpr int days = 15;

/// The bundle identifiers of records for no single application.
inline constexpr const char* allApps = "all";
inline constexpr const char* placeholder = "_placeholder";

/// The records of the 15 days up to today. A day without records gets one: with the account's whole
/// count, if `metrics` has one and the day is not before `minValidDate`, else an empty one.
std::vector<AppTracker::DailyAppStats>
makeFilledDailyData(const std::vector<AppTracker::DailyAppStats>& daily,
                    const std::optional<ProductivityMetrics>& metrics, Instant minValidDate,
                    const Calendar& calendar, Instant now);

struct WeekTotals {
    std::int64_t thisWeek = 0; ///< the seven days up to today
    std::int64_t lastWeek = 0; ///< the seven before those

    /// The change from last week to this week, in percent of last week; 0 when that had no press.
    double change() const;
};

WeekTotals calculateWeekTotals(const std::vector<AppTracker::DailyAppStats>& records,
                               const Calendar& calendar, Instant now);

} // namespace DashboardSeries
} // namespace fernhollow
