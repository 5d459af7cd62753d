#pragma once

#include "KeypressCore/CountBatch.h"
#include "KeypressCore/DatabaseOpening.h"
#include "KeypressCore/DatabasePlace.h"
#include "KeypressCore/Records.h"
#include "KeypressCore/SQLiteConnection.h"
#include "KeypressCore/SentCounts.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace fernhollow {

/// The tables of one account's database and the statements on them, for DailyCountsStore's executor.
///
/// Each operation prepares its own statements and finalizes them before it returns, and throws
/// DailyCountsStoreError when it fails. Hours are 0 to 23; `updatedAt` and `firstSeen` are seconds since
/// the Unix epoch. `unsynced_` holds the increments of hours that a power cut could still take away,
/// because they came after the last durable write.
class DailyCountsDatabase {
public:
    /// Opens the file, in write-ahead-log mode, and creates the tables that are missing.
    explicit DailyCountsDatabase(const std::filesystem::path& file, const DatabaseOpening& opening = {});

    void setPatience(std::chrono::milliseconds patience) { connection_.setPatience(patience); }

    /// Adds all of the counts, or nothing.
    void write(const CountBatch& counts, std::int64_t updatedAt);
    /// Does the same durably: when it returns, everything written so far is on the disk, even if `counts`
    /// is empty. Throws DatabaseMovedError when the file is no longer in its place, after making way for a
    /// new file there.
    void writeDurably(const CountBatch& counts, std::int64_t updatedAt);
    /// The rows of the day without the counts that a power cut could still take away.
    std::vector<HourlyCountRow> fetchDurableHourlyCounts(const DayKey& day);
    std::vector<AppHourlyCountRow> fetchDurableAppHourlyCounts(const DayKey& day);

    /// What the backend was given for the day; nothing when that is not known.
    std::optional<SentCount> sentCount(const DayKey& day);
    /// Notes durably that the backend is about to be given this count of the day.
    void noteSent(const DayKey& day, std::int64_t count);
    // What the backend has taken, as SentCounts remembers it; nothing without a device.
    void noteTaken(const std::vector<TakenRow>& rows);
    std::vector<TakenRow> taken(const DayKey& day);
    SentCounts::Counts takenCounts();
    void forgetTaken(const DayKey& from, const DayKey& to);
    void forgetTakenHours(const DayKey& before);
    /// Adds `by` to the day's count, durably: the presses of the day that only the backend has.
    void raise(const DayKey& day, std::int64_t by, std::int64_t updatedAt);

    void increment(const DayKey& day, std::int64_t by, std::int64_t updatedAt);
    void incrementHourly(const DayKey& day, int hour, std::int64_t by, std::int64_t updatedAt);
    void overwrite(const DayKey& day, std::int64_t count, std::int64_t updatedAt);
    void replaceHourly(const DayKey& day, const std::map<int, std::int64_t>& counts, std::int64_t updatedAt);
    std::int64_t count(const DayKey& day);
    std::vector<DailyCountRow> fetchCounts(const DayKey& from, const DayKey& to);
    std::vector<HourlyCountRow> fetchHourlyCounts(const DayKey& day);

    void incrementAppHourly(const DayKey& day, int hour, const std::string& bundleId, std::int64_t by,
                            std::int64_t updatedAt);
    std::vector<AppHourlyCountRow> fetchAppHourlyCounts(const DayKey& day);
    std::unordered_map<std::string, std::int64_t> fetchAppDailyCounts(const DayKey& day);
    void registerApp(const std::string& bundleId, const std::string& appName, std::int64_t firstSeen);
    std::vector<AppRegistryRow> fetchAppRegistry();
    void setAppHidden(const std::string& bundleId, bool isHidden);
    std::optional<std::string> getAppName(const std::string& bundleId);

private:
    void claim(std::int32_t owner);
    void expectInPlace();
    void completeDays();
    void followCopies(const DatabaseOpening& opening, const std::filesystem::path& file);
    SentCounts::Counts allCounts();
    int mark();
    void endRaise();
    void add(const CountBatch& counts, std::int64_t updatedAt);

    SQLiteConnection connection_;
    std::optional<DatabasePlace> place_; // present once the file and its companions exist
    CountBatch unsynced_;
    std::optional<SentCounts> sent_;
    bool isRaising_ = false; // a raise was announced to `sent_` and has not ended
};

} // namespace fernhollow
