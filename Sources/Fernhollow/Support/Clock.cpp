#include "Support/Clock.h"

#include <QTimer>

#include <utility>

namespace fernhollow {
namespace {

class SystemTimer final : public Clock::Timer {
public:
    SystemTimer(std::chrono::milliseconds delay, std::function<void()> fired) : fired_(std::move(fired)) {
        timer_.setSingleShot(true);
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
            const auto fire = std::move(fired_); // moved out, because the call may destroy this timer
            fire();
        });
        timer_.start(delay);
    }

private:
    QTimer timer_;
    std::function<void()> fired_;
};

} // namespace

std::unique_ptr<Clock::Timer> SystemClock::startTimer(std::chrono::milliseconds delay,
                                                      std::function<void()> fired) {
    return std::make_unique<SystemTimer>(delay, std::move(fired));
}

} // namespace fernhollow
