#pragma once

#include "KeypressCore/DayKey.h"
#include "KeypressCore/Records.h"
#include "Model/DailyCountPoint.h"
#include "Model/RecentDays.h"
#include "Model/Sync/RemoteCaches.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace fernhollow {

/// The account's known counts of the last 30 days, from which the history is made.
struct DailyHistory {
    DayKey day;             ///< today
    Instant noon;           ///< of today; it also changes with the time zone
    Instant first;          ///< days whose 12:00 is earlier are not shown
    std::int64_t today = 0; ///< the count to show for today, in place of today's rows
    std::vector<DailyCountRow> rows;
    std::shared_ptr<const HistoryCache> remote; ///< null without a sync engine

    /// One point for each of `days` from `first` on, in their order.
    std::vector<DailyCountPoint> points(const std::vector<RecentDays::Day>& days) const;

    bool operator==(const DailyHistory&) const = default;
};

/// The backend's count of a day; 0 when it has none, or without a sync engine.
std::int64_t remoteCount(const std::shared_ptr<const HistoryCache>& counts, const DayKey& day);

} // namespace fernhollow
