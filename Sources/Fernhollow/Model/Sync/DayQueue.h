#pragma once

#include "KeypressCore/DayKey.h"
#include "Support/Clock.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

namespace fernhollow {

/// The parts of a day that have still to reach the backend.
struct DayWork {
    bool count = false;
    bool hours = false;
    bool apps = false; ///< the counts per application and hour

    bool isEmpty() const { return !count && !hours && !apps; }
    bool operator==(const DayWork&) const = default;
};

/// The days that wait to be sent. A value of one engine.
///
/// A day stays until each of its parts is done, so that nothing that interrupts a cycle loses one, and a lost
/// part is sent again without the parts that were taken.
class DayQueue {
public:
    /// The day changed: these parts of it go out with the next cycle.
    void add(const DayKey& day, DayWork work);
    /// The day waits for its turn among others of the past.
    void addPast(const DayKey& day, DayWork work);

    /// What a cycle sends, in this order: today, the days that changed, `portion` days of the past, and those
    /// lost before; the newest first of each. What changes from now on is left to the next cycle.
    std::vector<DayKey> begin(const DayKey& today, std::size_t portion);

    /// The day was added as one of the past, and did not change since.
    bool isPast(const DayKey& day) const;
    /// The day changed since the cycle began.
    bool hasChanged(const DayKey& day) const;
    /// What the cycle under way has still to send of the day.
    DayWork work(const DayKey& day) const;
    /// These parts of the day have to be sent by it as well.
    void require(const DayKey& day, DayWork parts);
    /// The backend has these parts of the day, as they were when the cycle began.
    void done(const DayKey& day, DayWork parts);
    /// Something of the day could not be sent by a cycle that began at `since`.
    void lost(const DayKey& day, Moment since);

    /// When the first attempt failed to send what is still lost.
    std::optional<Moment> lostSince() const;
    std::size_t size() const { return entries_.size(); }
    bool isEmpty() const { return entries_.empty(); }

private:
    struct Entry {
        DayWork work;
        DayWork changed; // since the cycle under way began
        bool isPast = false;
        int losses = 0;
        std::optional<Moment> lostSince;
    };

    std::map<DayKey, Entry> entries_;
};

} // namespace fernhollow
