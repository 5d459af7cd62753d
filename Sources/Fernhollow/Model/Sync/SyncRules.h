#pragma once

#include <chrono>
#include <cstdint>

namespace fernhollow {

/// How long the periodic loop pauses when nothing was counted for `idle`.
std::chrono::seconds periodicPause(std::chrono::duration<double> idle);

/// Whether a server that answered with this status may answer otherwise soon: too many requests (429), or
/// a trouble of its own.
constexpr bool mayAnswerLater(int status) {
    return status == 429 || status >= 500;
}

/// What becomes of a day that this device counted here and that the backend knows of from this device.
struct DayMerge {
    enum class Kind {
        uploadLocal, ///< the backend knows no more than this machine
        restore,     ///< nothing is left here: the backend's count is taken
        add,         ///< counting began anew here: both counts are presses of their own
        foreign,     ///< another machine sends under this machine's identity: nothing is merged or sent
    };
    Kind kind = Kind::uploadLocal;
    std::int64_t count = 0; ///< of the day afterwards, here and there; of `foreign`, what was sent from here

    /// Of a day that this run has not sent yet; see SentDays for the others.
    static DayMerge of(std::int64_t local, std::int64_t remote);
    bool operator==(const DayMerge&) const = default;
};

} // namespace fernhollow
