#pragma once

#include "KeypressCore/Calendar.h"

#include <chrono>
#include <optional>
#include <vector>

namespace fernhollow {

/// The days of a chart from left to right. It finds the column of an instant.
class DayColumns {
public:
    /// The `count` days up to the one of `today`.
    DayColumns(int count, Instant today, const Calendar& calendar);

    int count() const { return static_cast<int>(starts_.size()); }
    /// 12:00 of each day.
    const std::vector<Instant>& noons() const { return noons_; }
    /// The column of the day of `instant`, from 0; nothing when the chart does not show that day.
    std::optional<int> column(Instant instant) const;

    bool operator==(const DayColumns&) const = default;

private:
    std::vector<Instant> starts_;
    std::vector<Instant> noons_;
    Instant end_; // of the last day
};

/// The day among `days` that a chart's scale reads as `reading`, or the nearest one; of two equally near
/// days the earlier. Nothing without a reading: a scale gives none for a place beside its plot.
///
/// A scale's reading is `readingAhead` later than the day that it means.
std::optional<Instant> dateAtLocation(std::optional<Instant> reading, std::vector<Instant> days,
                                      const Calendar& calendar);

inline constexpr auto readingAhead = std::chrono::hours(48);

} // namespace fernhollow
