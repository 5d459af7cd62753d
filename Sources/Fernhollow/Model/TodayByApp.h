#pragma once

#include "Model/AppTracker.h"

#include <cstdint>
#include <string>
#include <vector>

namespace fernhollow {

/// Functions of values for today's presses by hour and application.
namespace TodayByApp {

using Hours = std::vector<AppTracker::HourlyAppStats>; ///< in no order
using Totals = std::vector<AppTracker::AppStats>;      ///< in descending count

/// Adds `delta` presses of one application and updates its name.
void add(Hours& hours, int hour, const std::string& bundleId, const std::string& appName, std::int64_t delta);
void add(Totals& totals, const std::string& bundleId, const std::string& appName, std::int64_t delta);

struct Lists {
    Hours hours; ///< in the order of hours
    Totals totals;
};

/// Today's lists: the store's `rows` of `day` and the presses that are not written yet. Applications with
/// equal counts keep the order of `shown`.
Lists lists(const std::vector<AppHourlyCountRow>& rows, const std::vector<AppRegistryRow>& registry,
            const CountBatch& pending, const DayKey& day, const Totals& shown);

/// Whether both show the same applications and counts; the order of hours does not matter.
bool showsTheSame(const Hours& a, const Hours& b);
bool showsTheSame(const Totals& a, const Totals& b);

/// In the order of hours, then of identifiers.
Hours sorted(Hours hours);

} // namespace TodayByApp
} // namespace fernhollow
