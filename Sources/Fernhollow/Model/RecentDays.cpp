#include "Model/RecentDays.h"

namespace fernhollow {

const std::vector<RecentDays::Day>& RecentDays::upTo(Instant now, const Calendar& calendar) {
    const Instant noon = calendar.noon(now).value_or(now);
    if (!days_.empty() && noon == lastNoon_) {
        return days_;
    }
    lastNoon_ = noon;
    days_.clear();
    const Calendar steps = calendar.snapshot();
    const Instant today = steps.startOfDay(now);
    for (int age = count - 1; age >= 0; --age) {
        if (const auto date = steps.addingDays(today, -age)) {
            days_.push_back({DayKey(*date, steps), steps.noon(*date).value_or(*date)});
        }
    }
    return days_;
}

} // namespace fernhollow
