#pragma once

#include "KeypressCore/CountBatch.h"
#include "KeypressCore/DatabaseOpening.h"
#include "KeypressCore/Records.h"
#include "KeypressCore/SentCounts.h"
#include "Support/SerialExecutor.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace fernhollow {

class DailyCountsDatabase;

/// All counts of one account on this machine, in one SQLite database.
///
/// An actor: its operations return at once and run one at a time, in the order of the calls, on an
/// executor of its own. Once the database is open, only that executor touches it. An operation runs
/// whether or not its future is awaited. Awaiting throws DailyCountsStoreError and nothing else.
/// Destroying the store waits for the operations that were asked for and closes the database.
///
/// Hours are 0 to 23; `updatedAt` and `firstSeen` are seconds since the Unix epoch; day ranges
/// include both ends and compare day keys as text.
class DailyCountsStore {
public:
    /// Opens the database on the caller's thread, and creates the file and its tables where they are missing.
    /// Throws DailyCountsStoreError.
    explicit DailyCountsStore(std::filesystem::path url, const DatabaseOpening& opening = {});
    ~DailyCountsStore();
    DailyCountsStore(const DailyCountsStore&) = delete;
    DailyCountsStore& operator=(const DailyCountsStore&) = delete;

    const std::filesystem::path& url() const { return url_; }

    /// Adds all of the counts, or nothing.
    Future<void> write(CountBatch counts, std::int64_t updatedAt);
    /// Does the same durably: everything written so far is on the disk once this is done. Fails with a
    /// DatabaseMovedError when the file is no longer in its place; another store can then be opened there.
    Future<void> writeDurably(CountBatch counts, std::int64_t updatedAt);

    // What may be uploaded: the rows without the counts that a power cut could still take away. If the
    // backend knew more than the disk, the next start would add the backend's count to the disk's. The days'
    // counts need no such operation, because a day is uploaded only after a durable write.
    Future<std::vector<HourlyCountRow>> fetchDurableHourlyCounts(DayKey day);
    Future<std::vector<AppHourlyCountRow>> fetchDurableAppHourlyCounts(DayKey day);

    // What the backend was given. The store notes this only when DatabaseOpening names a device.
    Future<std::optional<SentCount>> sentCount(DayKey day);
    /// Notes that the backend is about to be given this machine's count of the day; await it before the
    /// request.
    Future<void> noteSent(DayKey day, std::int64_t count);
    // What the backend confirmed, which is remembered likewise. The names are those of the day without a
    // text.
    Future<void> noteTaken(std::vector<TakenRow> rows);
    Future<std::vector<TakenRow>> taken(DayKey day);
    Future<SentCounts::Counts> takenCounts();
    Future<void> forgetTaken(DayKey from, DayKey to);
    Future<void> forgetTakenHours(DayKey before);
    /// Adds `by` to the day's count: the presses of the day that only the backend has.
    Future<void> raise(DayKey day, std::int64_t by, std::int64_t updatedAt);

    /// Adds `by` to the day's count; does nothing unless `by` is 1 or more.
    Future<void> increment(DayKey day, std::int64_t by, std::int64_t updatedAt);
    /// Adds `by` to the hour's count; does nothing unless `by` is 1 or more and `hour` is 0 to 23. Fails
    /// like writeDurably when the file is no longer in its place.
    Future<void> incrementHourly(DayKey day, int hour, std::int64_t by, std::int64_t updatedAt);
    /// Sets the day's count to `count`, whatever the number.
    Future<void> overwrite(DayKey day, std::int64_t count, std::int64_t updatedAt);
    /// Replaces the day's hourly counts by `counts`, all or none; leaves out keys that are not an hour.
    Future<void> replaceHourly(DayKey day, std::map<int, std::int64_t> counts, std::int64_t updatedAt);
    /// The day's count, 0 when it has none.
    Future<std::int64_t> count(DayKey day);
    /// The rows from `from` to `to`, in the order of the days.
    Future<std::vector<DailyCountRow>> fetchCounts(DayKey from, DayKey to);
    /// The day's rows in the order of the hours; an hour without presses has none.
    Future<std::vector<HourlyCountRow>> fetchHourlyCounts(DayKey day);

    /// Adds `by` to the application's count in that hour, under the same conditions as incrementHourly.
    Future<void> incrementAppHourly(DayKey day, int hour, std::string bundleId, std::int64_t by,
                                    std::int64_t updatedAt);
    /// In the order of hours, then identifiers.
    Future<std::vector<AppHourlyCountRow>> fetchAppHourlyCounts(DayKey day);
    Future<std::unordered_map<std::string, std::int64_t>> fetchAppDailyCounts(DayKey day);
    /// Registers an application. Of a known one it changes the name and nothing else.
    Future<void> registerApp(std::string bundleId, std::string appName, std::int64_t firstSeen);
    /// In the binary order of the names.
    Future<std::vector<AppRegistryRow>> fetchAppRegistry();
    Future<void> setAppHidden(std::string bundleId, bool isHidden);
    /// Nothing when the application is unknown.
    Future<std::optional<std::string>> getAppName(std::string bundleId);

    /// Sets how long later operations wait for a lock that another process holds.
    void setPatience(std::chrono::milliseconds patience);

    /// Blocks until all operations asked for so far are done and their awaiting callers have continued.
    /// False when that takes longer than `limit`.
    bool waitUntilIdle(std::chrono::milliseconds limit);

    /// The folder "Fernhollow" in the user's data directory; this does not create it. Throws
    /// std::filesystem::filesystem_error, as do the next three.
    static std::filesystem::path databaseDirectory();
    /// The database of the time before accounts, in the folder, which it creates.
    static std::filesystem::path defaultURL();
    /// The account's database, named after the first characters of its address in lower case and
    /// base64, in the folder, which it creates.
    static std::filesystem::path urlForAccount(std::string_view email);
    /// The place of the account's database when that of urlForAccount belongs to another account, whose
    /// address begins with the same characters.
    static std::filesystem::path longUrlForAccount(std::string_view email);
    /// The number that marks the account's database as its own; see DatabaseOpening.
    static std::int32_t ownerMark(std::string_view email);
    /// Whether the database of the time before accounts exists. False on any failure, too.
    static bool globalDatabaseExists();
    /// Moves the database of the time before accounts, with its companions, to the account's place.
    /// True when it was moved; false, with nothing changed, when there is none or the account has a
    /// database already.
    static bool migrateGlobalDataToAccount(std::string_view email);

private:
    std::filesystem::path url_;
    std::shared_ptr<DailyCountsDatabase> database_;
    SerialExecutor executor_;
};

} // namespace fernhollow
