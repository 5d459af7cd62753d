#pragma once

#include <cstdint>

namespace fernhollow {

// The largest possible counts. Every count from outside is compared with these before it is used, so that
// no sum overflows and no impossible number reaches this machine's database.

/// Presses on one machine on one day. A key held all day makes some 3.5 million.
constexpr std::int64_t maximumDeviceDay = 10'000'000;

/// Presses of an account on one day, over all of its machines.
constexpr std::int64_t maximumAccountDay = 1'000'000'000'000'000;

/// Presses of an account in one hour, or in one application. Smaller, because an answer may have some hundred
/// thousand such rows.
constexpr std::int64_t maximumAccountRow = 1'000'000'000'000;

/// `count`, or 0 when its amount is larger than `maximum`.
constexpr std::int64_t believable(std::int64_t count, std::int64_t maximum) {
    return count <= maximum && count >= -maximum ? count : 0;
}

} // namespace fernhollow
