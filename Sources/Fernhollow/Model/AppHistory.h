#pragma once

#include "Model/AppTracker.h"
#include "Model/Sync/RemoteCaches.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fernhollow {

/// Functions of values that make the history per application. `now` decides which day is today in `calendar`.
namespace AppHistory {

/// 12:00 of the day at the beginning of `text`; nothing when there is none.
std::optional<Instant> normalizedDayDate(std::string_view text, const Calendar& calendar);

/// Merges the past days of the backend and of this machine: for each application the larger count with
/// its name, or the backend's when both are equal. Today is left out.
AppDailyCache merged(const AppDailyCache& remote, const AppDailyCache& local, const Calendar& calendar,
                     Instant now);

/// The past days' records from `minValidDate` on. A text that is not a day is left out, and logged if
/// `logsInvalidDays`.
std::vector<AppTracker::DailyAppStats> pastDays(const AppDailyCache& days, Instant minValidDate,
                                                const Calendar& calendar, Instant now, bool logsInvalidDays);

/// For the log: the number of days, entries and applications that the backend knows.
std::string describe(const AppDailyCache& remote);
/// For the log: the first and the last day that the backend knows; empty when it knows none.
std::string describeRange(const AppDailyCache& remote);

/// Whether both have the same counts for the same applications and days, in any order.
bool showsTheSame(const std::vector<AppTracker::DailyAppStats>& a,
                  const std::vector<AppTracker::DailyAppStats>& b, const Calendar& calendar);

} // namespace AppHistory
} // namespace fernhollow
