#include "Model/Sync/SyncSession.h"

#include "Model/Sync/BackOff.h"
#include "Model/Sync/SyncRules.h"

#include <algorithm>

namespace fernhollow {

using namespace std::chrono_literals;

// One read with trouble does not end the others, unless the backend asks for that.
void SyncSession::noteAnswer(const HttpAnswer& answer, Instant now) {
    isReachable_ = true;
    if (!asksForPause(answer.status)) {
        return;
    }
    const auto asked = retryAfter(answer.retryAfter, now);
    wantedPause_ = std::max(wantedPause_.value_or(0s), asked);
    isOver_ |= answer.status == tooManyRequests || asked > 0s;
}

std::optional<std::chrono::seconds> SyncSession::wantedPause() const {
    const bool isTroubled = wantedPause_ || (isLost_ && isReachable_);
    return isTroubled ? std::optional(wantedPause_.value_or(0s)) : std::nullopt;
}

} // namespace fernhollow
