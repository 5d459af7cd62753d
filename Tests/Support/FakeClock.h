#pragma once

#include "KeypressCore/Calendar.h"
#include "Support/Clock.h"

#include <list>
#include <string_view>

namespace fernhollow::tests {

/// A clock that stands still until a test moves it.
class FakeClock final : public Clock {
public:
    explicit FakeClock(Instant now) : now_(now) {}

    Instant now() const override { return now_; }
    Moment monotonic() const override { return Moment(elapsed_); }

    std::unique_ptr<Timer> startTimer(std::chrono::milliseconds delay, std::function<void()> fired) override {
        auto timer = std::make_unique<FakeTimer>(*this);
        timers_.push_back({timer.get(), elapsed_ + delay, std::move(fired)});
        return timer;
    }

    /// Sets the wall clock, which no timer notices.
    void set(Instant now) { now_ = now; }

    /// Lets time pass on both clocks and fires what is due, in order.
    void advance(std::chrono::milliseconds by) {
        now_ += by;
        elapsed_ += by;
        for (bool fired = true; fired;) {
            fired = false;
            for (const Entry& entry : timers_) {
                if (entry.due <= elapsed_) {
                    const auto fire = entry.fired; // the timer removes its entry when it is destroyed
                    remove(entry.timer);
                    fire();
                    fired = true;
                    break;
                }
            }
        }
    }

    std::size_t sleepers() const { return timers_.size(); }

private:
    struct FakeTimer final : Timer {
        explicit FakeTimer(FakeClock& owner) : clock(owner) {}
        ~FakeTimer() override { clock.remove(this); }
        FakeClock& clock;
    };
    struct Entry {
        Timer* timer;
        std::chrono::milliseconds due;
        std::function<void()> fired;
    };

    void remove(Timer* timer) {
        timers_.remove_if([timer](const Entry& entry) { return entry.timer == timer; });
    }

    Instant now_;
    std::chrono::milliseconds elapsed_{0};
    std::list<Entry> timers_;
};

/// A time of day in a zone.
inline Instant at(std::string_view zone, Calendar::Components components) {
    return Calendar(zone).date(components).value();
}

} // namespace fernhollow::tests
