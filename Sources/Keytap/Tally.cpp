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
    m_settings = settings;
    // What the new settings would have repeated so far is not made up for.
    m_repeated = m_heldSince ? repeats(now - *m_heldSince, m_settings) : 0;
}

void Tally::press(Time at) {
    settle(at);
    m_heldSince = at;
    m_repeated = 0;
    ++m_pending;
}

void Tally::release(Time at) {
    settle(at);
    m_heldSince.reset();
}

void Tally::settle(Time now) {
    if (!m_heldSince) {
        return;
    }
    const auto due = repeats(now - *m_heldSince, m_settings);
    if (due > m_repeated) {
        m_pending += due - m_repeated;
        m_repeated = due;
    }
}

} // namespace fernhollow::keytap
