#pragma once

#include "KeypressCore/DayKey.h"
#include "KeypressCore/Records.h"
#include "Model/ProductivityMetrics.h"
#include "Model/RecentDays.h"
#include "Model/Sync/RemoteCaches.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace fernhollow {

class Calendar;

/// The account's known counts of today's hours and of the month's days, from which its figures are made.
struct AccountFigures {
    DayKey day;                                  ///< today
    Instant noon;                                ///< of today; it also changes with the time zone
    std::int64_t today = 0;                      ///< the account's count of today
    std::shared_ptr<const HistoryCache> history; ///< null without a sync engine, here and below
    std::shared_ptr<const HourlyCache> hourly;
    std::vector<HourlyCountRow> rows;

    /// `days` are the last 30 days up to `now`.
    ProductivityMetrics metrics(const std::vector<RecentDays::Day>& days, const Calendar& calendar,
                                Instant now) const;

    bool operator==(const AccountFigures&) const = default;
};

} // namespace fernhollow
