#include "Presentation/DayColumns.h"

#include <algorithm>

namespace fernhollow {

DayColumns::DayColumns(int count, Instant today, const Calendar& calendar) {
    const Calendar steps = calendar.snapshot();
    const Instant last = steps.startOfDay(today);
    for (int age = count - 1; age >= -1; --age) {
        const Instant start = steps.startOfDay(steps.addingDays(last, -age).value_or(last));
        starts_.push_back(start);
        noons_.push_back(steps.noon(start).value_or(start));
    }
    end_ = starts_.back();
    starts_.pop_back();
    noons_.pop_back();
}

std::optional<int> DayColumns::column(Instant instant) const {
    if (starts_.empty() || instant < starts_.front() || instant >= end_) {
        return std::nullopt;
    }
    return static_cast<int>(std::ranges::upper_bound(starts_, instant) - starts_.begin()) - 1;
}

std::optional<Instant> dateAtLocation(std::optional<Instant> reading, std::vector<Instant> days,
                                      const Calendar& calendar) {
    if (!reading || days.empty()) {
        return std::nullopt;
    }
    const Calendar steps = calendar.snapshot();
    const Instant target = steps.startOfDay(*reading - readingAhead);
    std::ranges::sort(days);
    // The first of the nearest days; the meant day itself is at distance 0.
    return *std::ranges::min_element(
        days, {}, [&](Instant day) { return std::chrono::abs(steps.startOfDay(day) - target); });
}

} // namespace fernhollow
