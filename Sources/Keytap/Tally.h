#pragma once

#include "Keytap/Protocol.h"
#include "Keytap/Time.h"

#include <cstdint>
#include <optional>

namespace fernhollow::keytap {

/// How often a key repeats that is held for `held`.
std::uint64_t repeats(Time held, RepeatSettings settings);

/// The presses that one peer has not been sent yet, repeats included.
///
/// Repeats are computed from how long the key is held, so a service that was late counts them all the same.
/// Times never run backwards here. Owned by the peer's connection.
class Tally {
public:
    /// From now on keys repeat like this, also the one that is held.
    void setRepeat(RepeatSettings settings, Time now);

    void press(Time at);

    /// The key that was pressed last is up, or the peer may not know any more whether it is.
    void release(Time at);

    /// Adds the repeats until `now`.
    void settle(Time now);

    std::uint64_t pending() const { return pending_; }
    void setDelivered() { pending_ = 0; }

    /// True while time alone makes it grow.
    bool isRepeating() const { return heldSince_ && settings_.rate > 0; }

private:
    RepeatSettings settings_;
    std::uint64_t pending_ = 0;
    std::optional<Time> heldSince_;
    std::uint64_t repeated_ = 0; // how many repeats of the held key are already counted
};

} // namespace fernhollow::keytap
