#pragma once

#include "KeypressCore/Calendar.h"
#include "KeypressCore/DayKey.h"

#include <vector>

namespace fernhollow {

/// The last 30 days, looked up once for as long as the day and the time zone stay: they are asked for each
/// second.
class RecentDays {
public:
    static constexpr int count = 30;

    struct Day {
        DayKey key;
        Instant noon;
    };

    /// Up to the day of `now`, oldest first.
    const std::vector<Day>& upTo(Instant now, const Calendar& calendar);

private:
    Instant lastNoon_; // of the last one
    std::vector<Day> days_;
};

} // namespace fernhollow
