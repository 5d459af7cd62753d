#pragma once

#include "Model/AppTracker.h"
#include "Model/Sync/RemoteCaches.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fernhollow {

/// The history per application as functions of values: `now` tells which day is today in `calendar`.
namespace AppHistory {

/// 12:00 of the day that the text begins with.
std::optional<Instant> normalizedDayDate(std::string_view text, const Calendar& calendar);

/// What the backend and what this machine know of the past days: of each application the larger count,
/// with its name; the backend's when they are equal. Today is left out.
AppDailyCache merged(const AppDailyCache& remote, const AppDailyCache& local, const Calendar& calendar,
                     Instant now);

/// The past days' records from `minValidDate` on; a day whose text is none is left out, and logged if
/// `logsInvalidDays`.
std::vector<AppTracker::DailyAppStats> pastDays(const AppDailyCache& days, Instant minValidDate,
                                                const Calendar& calendar, Instant now, bool logsInvalidDays);

/// For the log: how many days, entries and applications the backend knows.
std::string describe(const AppDailyCache& remote);
/// For the log: the first and the last of its days; empty without any.
std::string describeRange(const AppDailyCache& remote);

/// Whether both hold the same counts of the same applications on the same days, in whatever order.
bool showsTheSame(const std::vector<AppTracker::DailyAppStats>& a,
                  const std::vector<AppTracker::DailyAppStats>& b, const Calendar& calendar);

} // namespace AppHistory
} // namespace fernhollow
