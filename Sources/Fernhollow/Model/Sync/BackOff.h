#pragma once

#include "Support/Clock.h"

#include <chrono>
#include <string_view>

namespace fernhollow {

/// How long the engine leaves a backend alone that asked for it or had trouble: a second, twice as long after
/// each further trouble up to a minute, and never shorter than the backend asked for.
///
/// A value of one engine.
class BackOff {
public:
    /// There was trouble at `now`.
    void lengthen(Moment now, std::chrono::seconds atLeast);
    /// All went well: the next trouble is the first one again.
    void end() { *this = {}; }

    /// 0 when requests may be made.
    std::chrono::milliseconds remaining(Moment now) const;

private:
    std::chrono::seconds next_{1};
    Moment until_;
};

/// The pause that a Retry-After field asks for (RFC 9110, section 10.2.3), as seconds or as a date; at most
/// an hour, and 0 when the field is neither.
std::chrono::seconds retryAfter(std::string_view field, Instant now);

} // namespace fernhollow
