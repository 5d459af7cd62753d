#pragma once

#include "KeypressCore/Calendar.h"

#include <chrono>
#include <optional>
#include <vector>

namespace fernhollow {

/// The days of a chart from left to right, and which of them an instant belongs to.
class DayColumns {
public:
    /// The `count` days up to the one of `today`.
    DayColumns(int count, Instant today, const Calendar& calendar);

    int count() const { return static_cast<int>(starts_.size()); }
    /// 12:00 of each.
    const std::vector<Instant>& noons() const { return noons_; }
    std::optional<int> column(Instant instant) const;

    bool operator==(const DayColumns&) const = default;

private:
    std::vector<Instant> starts_;
    std::vector<Instant> noons_;
    Instant end_; // of the last day
};

/// The day among `days` that a chart's scale reads as `reading`, or the nearest one; the earlier one when
/// two are as near. Nothing without a reading, which is how a scale answers beside its plot.
///
/// A scale gives its reading `readingAhead` later than the day it means.
std::optional<Instant> dateAtLocation(std::optional<Instant> reading, std::vector<Instant> days,
                                      const Calendar& calendar);

inline constexpr auto readingAhead = std::chrono::hours(48);

} // namespace fernhollow
