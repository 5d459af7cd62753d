#pragma once

#include "Support/Clock.h"

#include <chrono>
#include <functional>
#include <memory>

namespace fernhollow {

/// When to ask for permission to look for updates, and when to look: once an interval after the person
/// agreed, counted from the last check of either kind.
///
/// One timer at a time, at most longestSleep ahead: neither a machine that slept nor a clock that was set
/// back delays a check by more than that. Nothing is armed once the person said no. Main thread only.
class UpdateSchedule {
public:
    /// After a start: no window comes up, and nothing goes over the network, while the session still starts.
    static constexpr std::chrono::seconds askDelay{10};
    static constexpr std::chrono::seconds checkDelay{60};
    static constexpr std::chrono::seconds longestSleep{std::chrono::hours{1}};
    /// Until the next try while another check is under way.
    static constexpr std::chrono::seconds busyDelay{std::chrono::minutes{10}};

    struct Actions {
        std::function<void()> ask;   ///< answered by permit()
        std::function<bool()> check; ///< false when it is not the time for it
    };

    UpdateSchedule(Clock& clock, std::chrono::seconds interval, Actions actions);

    /// Counts this start of the program and arms the timer.
    void start();

    /// The person's answer.
    void permit(bool isAllowed);

    /// A check begins now.
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
