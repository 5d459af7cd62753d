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
/// executor of its own, the only one to touch the database once it is open. An operation is under way
/// whether or not its future is awaited. Awaiting throws DailyCountsStoreError and nothing else.
/// Destroying the store waits for what was asked of it and closes the database.
///
/// Hours are 0 to 23; `updatedAt` and `firstSeen` are seconds since the Unix epoch; day ranges
/// include both ends and compare day keys as text.
class DailyCountsStore {
public:
    /// Opens the database, on the caller's thread, and creates what is missing of it.
    explicit DailyCountsStore(std::filesystem::path url, const DatabaseOpening& opening = {});
    ~DailyCountsStore();
    DailyCountsStore(const DailyCountsStore&) = delete;
    DailyCountsStore& operator=(const DailyCountsStore&) = delete;

    const std::filesystem::path& url() const { return url_; }

    /// Adds all of the counts, or nothing.
    Future<void> write(CountBatch counts, std::int64_t updatedAt);
    /// Likewise; everything written up to now is on the disk once this is done. Fails with a
    /// DatabaseMovedError when the file is no longer in its place; another store can then be opened there.
    Future<void> writeDurably(CountBatch counts, std::int64_t updatedAt);

    // What may be uploaded: the rows without what a power cut could still take away. A backend that knew more
    // of this machine than its disk would be added to the disk's count at the next start. The days' counts
    // need no such operation as long as whatever is uploaded of them was written durably.
    Future<std::vector<HourlyCountRow>> fetchDurableHourlyCounts(DayKey day);
    Future<std::vector<AppHourlyCountRow>> fetchDurableAppHourlyCounts(DayKey day);

    // What the backend was given, which is remembered where the opening names a device.
    Future<std::optional<SentCount>> sentCount(DayKey day);
    /// To be awaited before the backend is given this count of the day, which is this machine's.
    Future<void> noteSent(DayKey day, std::int64_t count);
    /// Adds to the day's count what the backend has more of it.
    Future<void> raise(DayKey day, std::int64_t by, std::int64_t updatedAt);

    /// Adds to the day's count; nothing happens unless `by` is 1 or more.
    Future<void> increment(DayKey day, std::int64_t by, std::int64_t updatedAt);
    /// Adds to the hour's count; nothing happens unless `by` is 1 or more and `hour` is an hour. Fails like
    /// writeDurably when the file is no longer in its place.
    Future<void> incrementHourly(DayKey day, int hour, std::int64_t by, std::int64_t updatedAt);
    /// The day's count becomes `count`, whatever it is.
    Future<void> overwrite(DayKey day, std::int64_t count, std::int64_t updatedAt);
    /// The day's hourly counts become `counts`, all or none; keys that are not an hour are left out.
    Future<void> replaceHourly(DayKey day, std::map<int, std::int64_t> counts, std::int64_t updatedAt);
    /// The day's count, 0 when it has none.
    Future<std::int64_t> count(DayKey day);
    /// In the order of the days.
    Future<std::vector<DailyCountRow>> fetchCounts(DayKey from, DayKey to);
    /// In the order of the hours, those with a row only.
    Future<std::vector<HourlyCountRow>> fetchHourlyCounts(DayKey day);

    /// Adds to the application's count in that hour, under the same conditions as incrementHourly.
    Future<void> incrementAppHourly(DayKey day, int hour, std::string bundleId, std::int64_t by,
                                    std::int64_t updatedAt);
    /// In the order of hours, then identifiers.
    Future<std::vector<AppHourlyCountRow>> fetchAppHourlyCounts(DayKey day);
    Future<std::unordered_map<std::string, std::int64_t>> fetchAppDailyCounts(DayKey day);
    /// Registers an application, or gives a known one its new name and changes nothing else of it.
    Future<void> registerApp(std::string bundleId, std::string appName, std::int64_t firstSeen);
    /// In the binary order of the names.
    Future<std::vector<AppRegistryRow>> fetchAppRegistry();
    Future<void> setAppHidden(std::string bundleId, bool isHidden);
    /// Nothing when the application is unknown.
    Future<std::optional<std::string>> getAppName(std::string bundleId);

    /// How long an operation asked for from now on waits for a lock that another process holds.
    void setPatience(std::chrono::milliseconds patience);

    /// Blocks until everything asked for so far is done, and lets the awaiting callers go on; false when
    /// that takes longer than `limit`.
    bool waitUntilIdle(std::chrono::milliseconds limit);

    /// The folder "Fernhollow" in the user's data directory. Does not create it.
    /// This and the following throw std::filesystem::filesystem_error.
    static std::filesystem::path databaseDirectory();
    /// The database of the time before accounts, in the folder, which it creates.
    static std::filesystem::path defaultURL();
    /// The account's database, named after the first characters of its address in lower case and
    /// base64, in the folder, which it creates.
    static std::filesystem::path urlForAccount(std::string_view email);
    /// The account's database where another account's address begins with the same characters and has the
    /// place of urlForAccount.
    static std::filesystem::path longUrlForAccount(std::string_view email);
    /// By what the account's database is recognised as its own; see DatabaseOpening.
    static std::int32_t ownerMark(std::string_view email);
    /// False on any failure.
    static bool globalDatabaseExists();
    /// Moves the database of the time before accounts to the account's place, with its companions.
    /// False, with nothing changed, when there is none or the account has a database already.
    static bool migrateGlobalDataToAccount(std::string_view email);

private:
    std::filesystem::path url_;
    std::shared_ptr<DailyCountsDatabase> database_;
    SerialExecutor executor_;
};

} // namespace fernhollow
