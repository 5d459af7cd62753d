#pragma once

#include "Support/Clock.h"

#include <chrono>
#include <coroutine>
#include <memory>
#include <optional>
#include <stop_token>

namespace fernhollow {

/// `co_await Sleep(clock, 1s, stop)` gives true after a second, or false as soon as a stop is
/// requested. The stop has to be requested on the sleeper's own thread. Before request_stop()
/// returns, the sleeping coroutine has run until it ended or waits again.
class Sleep {
public:
    Sleep(Clock& clock, std::chrono::milliseconds duration, std::stop_token stop);

    bool await_ready() const noexcept { return stop_.stop_requested(); }
    void await_suspend(std::coroutine_handle<> sleeper);
    bool await_resume() const noexcept { return elapsed_; }

private:
    struct Wake {
        Sleep* sleep;
        void operator()() const { sleep->wake(false); }
    };

    void wake(bool elapsed);

    Clock& clock_;
    std::chrono::milliseconds duration_;
    std::stop_token stop_;
    std::unique_ptr<Clock::Timer> timer_;
    std::optional<std::stop_callback<Wake>> onStop_;
    std::coroutine_handle<> sleeper_;
    bool elapsed_ = false;
};

} // namespace fernhollow
