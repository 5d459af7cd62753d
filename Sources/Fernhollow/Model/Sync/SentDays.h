#pragma once

#include "KeypressCore/DayKey.h"
#include "Model/Sync/SyncRules.h"

#include <cstdint>
#include <map>
#include <optional>

namespace fernhollow {

/// The counts of days that this run gave the backend. A value of one engine.
///
/// What the backend knows of a day when the run first looks at it can be presses that this machine has lost,
/// and is merged, as far as it is remembered with what was sent by earlier runs. More than this run has sent
/// later on can only come from another machine with the same identity. It must not be merged: both machines
/// would add each other's sums again and again.
class SentDays {
public:
    /// What becomes of the day; DayMerge::Kind::foreign when its count on the backend is not from here.
    DayMerge merge(const DayKey& day, std::int64_t local, std::int64_t remote,
                   const std::optional<SentCount>& remembered = {}) const;

    /// The backend may hold this count from now on.
    void note(const DayKey& day, std::int64_t count);

private:
    std::map<DayKey, std::int64_t> largest_;
};

} // namespace fernhollow
