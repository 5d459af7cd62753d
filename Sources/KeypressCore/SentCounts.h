#pragma once

#include "KeypressCore/DayKey.h"
#include "KeypressCore/SQLiteConnection.h"
#include "KeypressCore/TakenRow.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace fernhollow {

/// What the backend was given of one day, and what of this machine's count is part of it.
struct SentCount {
    std::int64_t remote = 0; ///< the most that the backend may hold from here
    std::int64_t local = 0;  ///< the part of this machine's count that `remote` contains
    /// The part of it that a larger count than `remote` contains, should the backend hold one: when the files
    /// are a copy, whoever went on with the original has sent what was in both.
    std::int64_t copied = 0;

    bool operator==(const SentCount&) const = default;
};

/// Remembers what the backend was given of a database's days, in a file of its own beside it.
///
/// With it a merge adds what the backend lacks, and nothing twice, also after the database, this file or both
/// were lost or replaced by older ones; Documentation/Reliability.md has the table of cases. Each note is on
/// the disk before the backend is asked to take the count. A raise changes both files: it is announced here
/// first, and the database takes it together with a mark (its user_version) by which a later opening tells
/// whether it was done. Without this file, or without a note of the day, nothing is lost: such a day is
/// merged as that of a new machine. Owned by DailyCountsDatabase, whose thread is this class's too.
///
/// It also remembers the rows that the backend confirmed, so that no start sends them again. Losing that
/// costs requests and nothing else; it is forgotten where this machine's rows may no longer be the backend's:
/// under another device, and when the files turn out to be copies or the database an older one.
class SentCounts {
public:
    using Counts = std::map<DayKey, std::int64_t>;

    /// The file of a database.
    static std::filesystem::path fileOf(std::filesystem::path database);

    /// Opens the file for the days that were sent under `device`, and creates it if it is missing. What is
    /// there about another device is forgotten, and so is a file that cannot be read.
    SentCounts(const std::filesystem::path& database, const std::string& device);

    /// Ends a raise that was under way, given the database's mark.
    void endRaise(int mark);

    /// The days of which the database had more when they were sent: it is an older one, or a new one.
    std::set<DayKey> rolledBack(const Counts& counts) const;
    /// What was added to the days from the backend, so that it is in no hour of this machine.
    Counts raised() const;
    /// How much of a day's count is in no hour, when that is to be found out anew.
    void noteRaised(const DayKey& day, std::int64_t raised);

    /// The database is open and its days are complete. Notes what a count that is on the backend contains of
    /// days that were rolled back, and of all days where the files turn out to be copies.
    void settle(const Counts& counts, const std::set<DayKey>& rolledBack);

    std::optional<SentCount> of(const DayKey& day) const;
    /// The backend is about to be given this count of the day, which is this machine's.
    void note(const DayKey& day, std::int64_t count);

    /// The database, whose mark is `mark`, will add to the day what the backend has more. Returns the mark
    /// that it takes along.
    int announceRaise(const DayKey& day, std::int64_t by, int mark);

    /// The backend has taken these rows.
    void noteTaken(const std::vector<TakenRow>& rows);
    /// What was taken of the day; the applications' names for a day without a text.
    std::vector<TakenRow> taken(const DayKey& day) const;
    /// The days' counts that were taken, as they were sent.
    Counts takenCounts() const;
    /// Forgets what was taken of the days `from` to `to`.
    void forgetTaken(const DayKey& from, const DayKey& to);
    /// Forgets what was taken of hours of earlier days, which are not sent any more.
    void forgetTakenHours(const DayKey& before);

private:
    void open(const std::filesystem::path& file, const std::string& device);
    std::string places() const;

    std::filesystem::path database_;
    std::string device_;
    mutable std::optional<SQLiteConnection> connection_;
};

} // namespace fernhollow
