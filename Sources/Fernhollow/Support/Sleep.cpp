#include "Support/Sleep.h"

#include <utility>

namespace fernhollow {

Sleep::Sleep(Clock& clock, std::chrono::milliseconds duration, std::stop_token stop)
    : clock_(clock), duration_(duration), stop_(std::move(stop)) {}

void Sleep::await_suspend(std::coroutine_handle<> sleeper) {
    sleeper_ = sleeper;
    timer_ = clock_.startTimer(duration_, [this] { wake(true); });
    onStop_.emplace(stop_, Wake{this});
}

void Sleep::wake(bool elapsed) {
    if (const auto sleeper = std::exchange(sleeper_, nullptr)) {
        elapsed_ = elapsed;
        timer_.reset();
        sleeper.resume(); // this object may be gone from here on
    }
}

} // namespace fernhollow
