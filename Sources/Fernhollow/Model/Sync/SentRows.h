#pragma once

#include "KeypressCore/TakenRow.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace fernhollow {

/// The rows that the backend has taken or is being given, so that each is sent once: while a person types,
/// there is a cycle each second, and nearly all rows are as they were.
///
/// What earlier cycles and runs noted in the store is loaded day by day, as the days are looked at. The
/// applications' names are the rows of the day without a text. A value of one engine.
class SentRows {
public:
    bool knows(const DayKey& day) const { return days_.contains(day); }
    /// What the store remembers of a day; nothing happens when the day is known already.
    void load(const DayKey& day, const std::vector<TakenRow>& rows);

    bool has(const TakenRow& row) const { return value(row) == row.value; }
    /// The value under which the row with these keys was sent.
    std::optional<std::string> value(const TakenRow& row) const;

    /// True when the row has to be sent, by this caller and no other. It counts as sent from now on.
    bool claim(const TakenRow& row);
    /// The row was not taken after all; another value that was claimed meanwhile stays claimed.
    void release(const TakenRow& row);

    /// The rows of the day will hardly be asked for again, or are to be loaded anew.
    void forget(const DayKey& day) { days_.erase(day); }

private:
    using Place = std::pair<int, std::string>; // hour and application

    std::map<DayKey, std::map<Place, std::string>> days_;
};

} // namespace fernhollow
