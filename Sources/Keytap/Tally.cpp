#include "Keytap/Tally.h"

namespace fernhollow::keytap {

std::uint64_t repeats(Time held, RepeatSettings settings) {
    const auto repeating = held - std::chrono::milliseconds(settings.delay);
    if (settings.rate == 0 || repeating < Time::zero()) {
        return 0;
    }
    constexpr std::uint64_t second = Time(std::chrono::seconds(1)).count();
    return 1 + static_cast<std::uint64_t>(repeating.count()) * settings.rate / second;
}

void Tally::setRepeat(RepeatSettings settings, Time now) {
    settle(now);
    settings_ = settings;
    // Repeats that the new settings would already have made are not added.
    repeated_ = heldSince_ ? repeats(now - *heldSince_, settings_) : 0;
}

void Tally::press(Time at) {
    settle(at);
    heldSince_ = at;
    repeated_ = 0;
    ++pending_;
}

void Tally::release(Time at) {
    settle(at);
    heldSince_.reset();
}

void Tally::settle(Time now) {
    if (!heldSince_) {
        return;
    }
    const auto due = repeats(now - *heldSince_, settings_);
    if (due > repeated_) {
        pending_ += due - repeated_;
        repeated_ = due;
    }
}

} // namespace fernhollow::keytap
