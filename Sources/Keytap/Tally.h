#pragma once

#include "Keytap/Protocol.h"
#include "Keytap/Time.h"

#include <cstdint>
#include <optional>

namespace fernhollow::keytap {

/// How often a key that is held for `held` has repeated.
std::uint64_t repeats(Time held, RepeatSettings settings);

/// The presses, including repeats, that were not yet sent to one peer.
///
/// Repeats are computed from how long the key is held, so they are right even when the service runs late.
/// Each call's time is at or after that of the call before. Owned by the peer's connection.
class Tally {
public:
    /// From now on keys repeat with these settings, including a key that is held.
    void setRepeat(RepeatSettings settings, Time now);

    void press(Time at);

    /// The key that was pressed last came up, or the peer may no longer learn whether it did.
    void release(Time at);

    /// Adds the repeats until `now`.
    void settle(Time now);

    std::uint64_t pending() const { return pending_; }
    void setDelivered() { pending_ = 0; }

    /// True while a held key repeats, so that the tally grows with time alone.
    bool isRepeating() const { return heldSince_ && settings_.rate > 0; }

private:
    RepeatSettings settings_;
    std::uint64_t pending_ = 0;
    std::optional<Time> heldSince_;
    std::uint64_t repeated_ = 0; // how many repeats of the held key are already counted
};

} // namespace fernhollow::keytap
