#pragma once

#include "KeypressCore/Records.h"
#include "Support/Clock.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace fernhollow {

/// The rows of one day that the backend has taken, so that a cycle only sends what changed since: while
/// somebody types there is one each second, and nearly all rows are as they were.
///
/// It believes that for an hour, in case the backend lost them.
class SentRows {
public:
    /// Forgets what belongs to another day than `day` or is too old at `now`.
    void begin(const DayKey& day, Instant now);

    bool hold(const HourlyCountRow& row) const;
    bool hold(const AppHourlyCountRow& row) const;
    bool hold(const AppRegistryRow& row) const;

    // Rows of other days are not noted: they are sent once anyway.
    void note(const HourlyCountRow& row);
    void note(const AppHourlyCountRow& row);
    void note(const AppRegistryRow& row);

private:
    DayKey day_;
    Instant since_;
    std::map<int, std::int64_t> hours_;
    std::map<std::pair<int, std::string>, std::int64_t> appHours_;
    std::map<std::string, std::pair<std::string, bool>> apps_; // name and whether hidden
};

} // namespace fernhollow
