#include "Model/Sync/SentDays.h"

#include "KeypressCore/CountLimits.h"

#include <algorithm>

namespace fernhollow {

DayMerge SentDays::merge(const DayKey& day, std::int64_t local, std::int64_t remote,
                         const std::optional<SentCount>& remembered) const {
    const auto sent = largest_.find(day);
    if (sent != largest_.end() && remote > sent->second && remote <= maximumDeviceDay) {
        return {DayMerge::Kind::foreign, sent->second};
    }
    return remembered ? DayMerge::since(*remembered, local, remote) : DayMerge::of(local, remote);
}

void SentDays::note(const DayKey& day, std::int64_t count) {
    const auto [sent, isNew] = largest_.try_emplace(day, count);
    sent->second = std::max(sent->second, count);
}

} // namespace fernhollow
