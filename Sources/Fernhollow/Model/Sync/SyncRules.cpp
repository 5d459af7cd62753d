#include "Model/Sync/SyncRules.h"

#include "KeypressCore/CountLimits.h"

#include <algorithm>

namespace fernhollow {

using namespace std::chrono_literals;

// Often while the person types, for the sake of the other machines' screens; seldom when no one is there.
std::chrono::seconds periodicPause(std::chrono::duration<double> idle) {
    return idle < 30s ? 1s : idle < 60s ? 5s : idle < 300s ? 15s : idle < 900s ? 30s : 60s;
}

// A count that no machine can have, alone or together with what is here, was forged: anyone
// who knows the address can write it. It is replaced on the backend by what is here and never comes here.
DayMerge DayMerge::of(std::int64_t local, std::int64_t remote) {
    if (local >= remote || remote > maximumDeviceDay - std::max<std::int64_t>(local, 0)) {
        return {Kind::uploadLocal, local};
    }
    if (local <= 0) {
        return {Kind::restore, remote};
    }
    return {Kind::add, local + remote};
}

DayMerge DayMerge::since(const SentCount& sent, std::int64_t local, std::int64_t remote) {
    const bool isLarger = remote > sent.remote && remote <= maximumDeviceDay;
    const std::int64_t contained = isLarger ? std::max(sent.copied, sent.local) : sent.local;
    const std::int64_t lacking = std::max<std::int64_t>(local - contained, 0);
    const std::int64_t count = (isLarger ? remote : sent.remote) + lacking;
    if (count <= local || count > maximumDeviceDay) {
        return {Kind::uploadLocal, local};
    }
    return {Kind::resume, count};
}

} // namespace fernhollow
