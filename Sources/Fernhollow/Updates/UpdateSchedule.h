#pragma once

#include "Support/Clock.h"

#include <chrono>
#include <functional>
#include <memory>

namespace fernhollow {

/// Decides when to ask for permission to look for updates, and when to look. Once the person has
/// agreed, it looks an interval after the last check, whether that was scheduled or the person's own.
///
/// It has one timer at a time, set for at most longestSleep. So neither a machine that slept nor a clock
/// that was set back delays a check by more than that. After a "no" it has no timer. Main thread only.
class UpdateSchedule {
public:
    /// Delays after a start, so that no window opens and no request is sent while the session is still
    /// starting.
    static constexpr std::chrono::seconds askDelay{10};
    static constexpr std::chrono::seconds checkDelay{60};
    static constexpr std::chrono::seconds longestSleep{std::chrono::hours{1}};
    /// The delay until the next try, when another check is under way.
    static constexpr std::chrono::seconds busyDelay{std::chrono::minutes{10}};

    struct Actions {
        std::function<void()> ask;   ///< asks the person; the answer comes by permit()
        std::function<bool()> check; ///< begins a check; false when that is not possible now
    };

    UpdateSchedule(Clock& clock, std::chrono::seconds interval, Actions actions);

    /// Counts this start of the program and arms the timer.
    void start();

    /// The person's answer.
    void permit(bool isAllowed);

    /// Notes that a check begins now.
    void noteCheck();

    void stop();

private:
    void wake();
    void check();
    void arm(std::chrono::seconds delay);
    std::chrono::seconds untilDue() const;

    Clock& clock_;
    std::chrono::seconds interval_;
    Actions actions_;
    std::unique_ptr<Clock::Timer> timer_;
};

} // namespace fernhollow
