#pragma once

#include <cstdint>

namespace fernhollow {

// What a count can be at most. Every count that comes from outside is held against these before it is used,
// so that no sum of counts overflows and no stranger's number reaches this machine's database.

/// Presses on one machine on one day. A key held all day makes some 3.5 million.
constexpr std::int64_t maximumDeviceDay = 10'000'000;

/// Presses of an account, over all of its machines and days.
constexpr std::int64_t maximumAccountTotal = 1'000'000'000'000'000;

} // namespace fernhollow
