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

/// What is known of the account's last 30 days, from which the history is made.
struct DailyHistory {
    DayKey day;             ///< today
    Instant noon;           ///< of today; it also changes with the time zone
    Instant first;          ///< no earlier day is shown
    std::int64_t today = 0; ///< shown for today, whatever else is known of it
    std::vector<DailyCountRow> rows;
    std::shared_ptr<const HistoryCache> remote; ///< null without a sync engine

    /// One point for each of `days` from `first` on, in their order.
    std::vector<DailyCountPoint> points(const std::vector<RecentDays::Day>& days) const;

    bool operator==(const DailyHistory&) const = default;
};

/// The backend's count of a day; 0 where it knows none, or without a sync engine.
std::int64_t remoteCount(const std::shared_ptr<const HistoryCache>& counts, const DayKey& day);

} // namespace fernhollow
