#pragma once

#include "Model/AppTracker.h"
#include "Model/ProductivityMetrics.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace fernhollow {

/// What the dashboard shows of the days, as functions of values: `now` tells which day is today in
/// `calendar`.
namespace DashboardSeries {

constexpr int days = 15;

/// The bundle identifiers of the records that stand for no single application.
inline constexpr const char* allApps = "all";
inline constexpr const char* placeholder = "_placeholder";

/// The records of the 15 days up to today. A day without any gets one of the account's whole count, when
/// `metrics` has one and the day is not before `minValidDate`, or else an empty one.
std::vector<AppTracker::DailyAppStats>
makeFilledDailyData(const std::vector<AppTracker::DailyAppStats>& daily,
                    const std::optional<ProductivityMetrics>& metrics, Instant minValidDate,
                    const Calendar& calendar, Instant now);

struct WeekTotals {
    std::int64_t thisWeek = 0; ///< the seven days up to today
    std::int64_t lastWeek = 0; ///< the seven before those

    /// In percent of the last week; 0 when that had no press.
    double change() const;
};

WeekTotals calculateWeekTotals(const std::vector<AppTracker::DailyAppStats>& records,
                               const Calendar& calendar, Instant now);

} // namespace DashboardSeries
} // namespace fernhollow
