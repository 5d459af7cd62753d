#pragma once

#include "KeypressCore/Records.h"
#include "Support/Clock.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace fernhollow {

/// The rows that the backend has taken or is being given, so that each is sent once: while a person types,
/// there is a cycle each second, and nearly all rows are as they were.
///
/// It believes that for an hour, in case the backend lost them. A value of one engine.
class SentRows {
public:
    // True when the row has to be sent, by this caller and no other. It counts as sent from now on.
    bool claim(const HourlyCountRow& row, Moment now);
    bool claim(const AppHourlyCountRow& row, Moment now);
    bool claim(const AppRegistryRow& row, Moment now);

    // The row was not taken after all.
    void release(const HourlyCountRow& row);
    void release(const AppHourlyCountRow& row);
    void release(const AppRegistryRow& row);

    /// The rows of the day will hardly be asked for again.
    void forget(const DayKey& day) { days_.erase(day); }

private:
    struct Day {
        Moment since;
        std::map<int, std::int64_t> hours;
        std::map<std::pair<int, std::string>, std::int64_t> appHours;
    };
    struct Registry {
        Moment since;
        std::map<std::string, std::pair<std::string, bool>> apps; // name and whether hidden
    };

    Day& rowsOf(const DayKey& day, Moment now);

    std::map<DayKey, Day> days_;
    Registry registry_;
};

} // namespace fernhollow
