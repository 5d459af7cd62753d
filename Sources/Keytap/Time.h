#pragma once

#include <chrono>

namespace fernhollow::keytap {

/// A point in time on the monotonic clock (CLOCK_MONOTONIC), which also stamps the kernel's events.
using Time = std::chrono::microseconds;

/// Now, on that clock.
Time monotonicNow();

} // namespace fernhollow::keytap
