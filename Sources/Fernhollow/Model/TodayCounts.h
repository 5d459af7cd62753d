#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

namespace fernhollow {

/// The account's count of a day, an hour or an application, of which this machine and the backend each know
/// one. The larger one is nearer the truth: the backend adds up all machines, but lacks what this one has not
/// sent yet.
constexpr std::int64_t accountWide(std::int64_t here, std::int64_t there) {
    return std::max(here, there);
}

/// Today's counts as a refresh shows them.
struct TodayCounts {
    std::int64_t device = 0;
    std::int64_t account = 0;
    bool isRemote = false; ///< both are the backend's total, because nothing was counted here

    /// `here` was counted on this machine and `shown` is the account's count until now, which never goes
    /// down. `remoteTotal` is the backend's total, absent without a sync engine.
    static TodayCounts of(std::int64_t here, std::int64_t shown, std::optional<std::int64_t> remoteTotal);
};

} // namespace fernhollow
