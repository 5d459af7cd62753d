#include "Model/PendingCounts.h"

#include <utility>

namespace fernhollow {

CountBatch PendingCounts::all(const DayKey& today) const {
    CountBatch counts = unwritten_;
    if (today_ > 0) {
        counts.days[today] += today_;
    }
    return counts;
}

void PendingCounts::endDay(const DayKey& day) {
    if (const std::int64_t presses = std::exchange(today_, 0); presses > 0) {
        unwritten_.days[day] += presses;
    }
}

void PendingCounts::refused(const CountBatch& hours) {
    written_.subtract(hours);
    unwritten_.add(hours);
}

void PendingCounts::loseFile() {
    unwritten_.add(std::exchange(written_, {}));
}

CountBatch PendingCounts::take(const DayKey& today) {
    endDay(today);
    return std::exchange(unwritten_, {});
}

void PendingCounts::giveBack(const CountBatch& counts, const DayKey& today) {
    unwritten_.add({.days = counts.days, .hours = counts.hours, .applications = {}, .names = {}});
    if (auto presses = unwritten_.days.extract(today)) {
        today_ += presses.mapped();
    }
}

} // namespace fernhollow
