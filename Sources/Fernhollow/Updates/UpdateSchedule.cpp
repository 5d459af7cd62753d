#include "Updates/UpdateSchedule.h"

#include "Updates/UpdatePreferences.h"

#include <algorithm>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr int startThatAsks = 2; // at a second start the person knows the program that asks

constexpr auto shortestInterval = std::chrono::seconds(1h); // many machines ask the feed's server

} // namespace

UpdateSchedule::UpdateSchedule(Clock& clock, std::chrono::seconds interval, Actions actions)
    : clock_(clock), interval_(std::max(interval, shortestInterval)), actions_(std::move(actions)) {}

void UpdateSchedule::start() {
    const auto isAllowed = UpdatePreferences::automaticChecks();
    if (isAllowed) {
        if (*isAllowed) {
            arm(std::max(untilDue(), checkDelay));
        }
        return;
    }
    const int starts = std::min(UpdatePreferences::starts() + 1, startThatAsks);
    UpdatePreferences::setStarts(starts);
    if (starts >= startThatAsks) {
        arm(askDelay);
    }
}

void UpdateSchedule::permit(bool isAllowed) {
    UpdatePreferences::setAutomaticChecks(isAllowed);
    timer_.reset();
    if (isAllowed) {
        arm(untilDue());
    }
}

void UpdateSchedule::noteCheck() {
    UpdatePreferences::setLastCheck(clock_.now());
}

void UpdateSchedule::stop() {
    timer_.reset();
}

void UpdateSchedule::wake() {
    const auto isAllowed = UpdatePreferences::automaticChecks();
    if (!isAllowed) {
        actions_.ask();
    } else if (*isAllowed) {
        check();
    }
}

void UpdateSchedule::check() {
    if (untilDue() > 0s) {
        arm(untilDue());
        return;
    }
    // Whether this check fails or not, the next one comes an interval later.
    const bool hasBegun = actions_.check();
    arm(hasBegun ? interval_ : busyDelay);
}

void UpdateSchedule::arm(std::chrono::seconds delay) {
    timer_ = clock_.startTimer(std::clamp(delay, 0s, longestSleep), [this] { wake(); });
}

// Rounded up: a timer that fires a fraction early must not be armed for nothing at all.
std::chrono::seconds UpdateSchedule::untilDue() const {
    const auto last = UpdatePreferences::lastCheck();
    const auto now = clock_.now();
    if (!last || *last > now) { // the clock was set back, so the time since then is unknown
        return 0s;
    }
    return std::max(0s, std::chrono::ceil<std::chrono::seconds>(*last + interval_ - now));
}

} // namespace fernhollow
