#pragma once

#include "KeypressCore/CountBatch.h"
#include "KeypressCore/DayKey.h"

#include <cstdint>

namespace fernhollow {

/// What was counted and is not safe on the disk yet. A value of the model, without the applications' counts,
/// which AppTracker keeps.
///
/// Today's presses wait for the next flush. A press's hour goes to the store at once, but only the flush
/// makes it durable: until then it would be lost with a file that is deleted or replaced.
class PendingCounts {
public:
    /// Today's presses that no flush has taken.
    std::int64_t today() const { return today_; }
    /// There is something for a flush to write.
    bool isEmpty() const { return today_ == 0 && unwritten_.isEmpty(); }
    /// What a flush would write, for the log.
    CountBatch all(const DayKey& today) const;

    void addPresses(std::int64_t count) { today_ += count; }
    /// Today's presses belong to no account.
    void discardToday() { today_ = 0; }
    /// `day` is over. Its presses wait for the next flush as that day's.
    void endDay(const DayKey& day);

    /// The hours were handed to the store.
    void addWritten(const CountBatch& hours) { written_.add(hours); }
    /// The hours could not be handed to a store. A flush writes them.
    void addUnwritten(const CountBatch& hours) { unwritten_.add(hours); }
    /// The store did not take hours that it was handed.
    void refused(const CountBatch& hours);
    /// The store's file is gone with everything that no flush made durable.
    void loseFile();

    /// Everything, for a flush; presses that follow belong to the next one.
    CountBatch take(const DayKey& today);
    /// The hours that the store has and a flush makes durable.
    const CountBatch& written() const { return written_; }
    /// A flush failed: its days and hours wait for the next one.
    void giveBack(const CountBatch& counts, const DayKey& today);
    /// A flush made these hours durable.
    void noteDurable(const CountBatch& hours) { written_.subtract(hours); }

private:
    std::int64_t today_ = 0;
    CountBatch unwritten_; // hours, and days that are over
    CountBatch written_;   // hours alone
};

} // namespace fernhollow
