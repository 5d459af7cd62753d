#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace fernhollow {

/// A point in time on the wall clock, which may be set forwards or backwards at any moment.
using Instant = std::chrono::system_clock::time_point;

/// A point in time on the monotonic clock, which runs on when the wall clock is set. Only differences
/// within one run of the program mean something.
using Moment = std::chrono::steady_clock::time_point;

/// Whole seconds since the Unix epoch, truncated toward zero.
inline std::int64_t unixSeconds(Instant instant) {
    return std::chrono::duration_cast<std::chrono::seconds>(instant.time_since_epoch()).count();
}

/// The only source of time: the wall clock, the monotonic clock, and timers that follow the latter.
///
/// Each object that needs time is given a clock, so that a test can move it past midnight. Timers fire on the
/// thread that started them, from its event loop.
class Clock {
public:
    /// A started timer; destroying it cancels it.
    class Timer {
    public:
        virtual ~Timer() = default;
    };

    virtual ~Clock() = default;
    virtual Instant now() const = 0;
    virtual Moment monotonic() const = 0;
    /// Calls `fired` once, after `delay`.
    virtual std::unique_ptr<Timer> startTimer(std::chrono::milliseconds delay,
                                              std::function<void()> fired) = 0;
};

/// The system's real-time and monotonic clocks.
class SystemClock final : public Clock {
public:
    Instant now() const override { return std::chrono::system_clock::now(); }
    Moment monotonic() const override { return std::chrono::steady_clock::now(); }
    std::unique_ptr<Timer> startTimer(std::chrono::milliseconds delay, std::function<void()> fired) override;
};

} // namespace fernhollow
