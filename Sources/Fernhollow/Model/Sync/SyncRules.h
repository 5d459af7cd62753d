#pragma once

#include "KeypressCore/SentCounts.h"

#include <chrono>
#include <cstdint>

namespace fernhollow {

/// How long the periodic loop pauses when nothing was counted for `idle`.
std::chrono::seconds periodicPause(std::chrono::duration<double> idle);

constexpr int tooManyRequests = 429;

/// Whether a server that answered with this status is to be left alone for a while.
constexpr bool asksForPause(int status) {
    return status == tooManyRequests || status >= 500;
}

/// Whether a write that was answered with this status may be taken another time: there was trouble, it was
/// not our backend (a redirection), or the backend does not let anything be written or has no tables yet.
/// Any other status refuses what was sent.
constexpr bool mayBeTakenLater(int status) {
    return asksForPause(status) || status < 200 || (status >= 300 && status < 400) || status == 401 ||
           status == 403 || status == 404 || status == 408;
}

/// What becomes of a day that this device counted here and that the backend knows of from this device.
struct DayMerge {
    enum class Kind {
        uploadLocal, ///< the backend knows no more than this machine
        restore,     ///< nothing is left here: the backend's count is taken
        add,         ///< counting began anew here: both counts are presses of their own
        resume,      ///< of a day that was sent before, the backend has what this machine lost
        foreign,     ///< another machine sends under this machine's identity: nothing is merged or sent
    };
    Kind kind = Kind::uploadLocal;
    std::int64_t count = 0; ///< of the day afterwards, here and there; of `foreign`, what was sent from here

    /// The rule for a day of which nothing is remembered.
    static DayMerge of(std::int64_t local, std::int64_t remote);
    /// The rule for a day of which was sent before: what the backend lacks of this machine's count is added
    /// to the most that the backend has or had.
    static DayMerge since(const SentCount& sent, std::int64_t local, std::int64_t remote);
    bool operator==(const DayMerge&) const = default;
};

} // namespace fernhollow
