#include "Model/TodayCounts.h"

#include "KeypressCore/CountLimits.h"

namespace fernhollow {

TodayCounts TodayCounts::of(std::int64_t here, std::int64_t shown, std::optional<std::int64_t> remoteTotal) {
    if (here == 0 && remoteTotal && *remoteTotal >= 1 && *remoteTotal <= maximumAccountDay) {
        return {.device = *remoteTotal, .account = *remoteTotal, .isRemote = true};
    }
    const std::int64_t account = accountWide(here, shown);
    return {.device = remoteTotal ? account : here, .account = account};
}

} // namespace fernhollow
