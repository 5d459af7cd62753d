#pragma once

#include "Support/Clock.h"

#include <cstdint>

namespace fernhollow {

/// One day of the history.
struct DailyCountPoint {
    Instant day; ///< 12:00 of the day
    std::int64_t count = 0;

    Instant id() const { return day; }
    bool operator==(const DailyCountPoint&) const = default;
};

} // namespace fernhollow
