#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

namespace fernhollow {

/// The account's count of a day, an hour or an application, from this machine's count and the backend's. The
/// larger one is nearer the truth: the backend adds up all machines, but lacks what this machine has not sent
/// yet.
constexpr std::int64_t accountWide(std::int64_t here, std::int64_t there) {
    return std::max(here, there);
}

/// Today's counts as a refresh shows them.
struct TodayCounts {
    std::int64_t device = 0;
    std::int64_t account = 0;
    bool isRemote = false; ///< both are the backend's total, because nothing was counted here

    /// `here` is this machine's count. `shown` is the account's count shown so far, which never goes
    /// down. `remoteTotal` is the backend's total, absent without a sync engine.
    static TodayCounts of(std::int64_t here, std::int64_t shown, std::optional<std::int64_t> remoteTotal);
};

} // namespace fernhollow
