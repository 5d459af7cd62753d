#pragma once

#include "KeypressCore/Calendar.h"
#include "KeypressCore/DayKey.h"

#include <vector>

namespace fernhollow {

/// The last 30 days. They are needed each second, so they are computed again only when the day or the time
/// zone changes.
class RecentDays {
public:
    static constexpr int count = 30;

    struct Day {
        DayKey key;
        Instant noon;
    };

    /// The 30 days up to the day of `now`, oldest first.
    const std::vector<Day>& upTo(Instant now, const Calendar& calendar);

private:
    Instant lastNoon_; // 12:00 of the last day
    std::vector<Day> days_;
};

} // namespace fernhollow
