#pragma once

#include "Model/AppTracker.h"

#include <cstdint>
#include <string>
#include <vector>

namespace fernhollow {

/// Today's presses by hour and application as functions of values.
namespace TodayByApp {

using Hours = std::vector<AppTracker::HourlyAppStats>; ///< in no order
using Totals = std::vector<AppTracker::AppStats>;      ///< in descending count

/// Adds presses of one application, under its newest name.
void add(Hours& hours, int hour, const std::string& bundleId, const std::string& appName, std::int64_t delta);
void add(Totals& totals, const std::string& bundleId, const std::string& appName, std::int64_t delta);

struct Lists {
    Hours hours; ///< in the order of hours
    Totals totals;
};

/// What the store has of `day` together with what is not written yet. Applications with equal counts stay in
/// the order of `shown`.
Lists lists(const std::vector<AppHourlyCountRow>& rows, const std::vector<AppRegistryRow>& registry,
            const CountBatch& pending, const DayKey& day, const Totals& shown);

/// Whether a view of both shows the same applications and counts; hours in whatever order.
bool showsTheSame(const Hours& a, const Hours& b);
bool showsTheSame(const Totals& a, const Totals& b);

/// In the order of hours, then of identifiers.
Hours sorted(Hours hours);

} // namespace TodayByApp
} // namespace fernhollow
