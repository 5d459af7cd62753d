#include "KeypressCore/DailyCountsDatabase.h"

#include "KeypressCore/CountLimits.h"
#include "KeypressCore/DailyCountsStoreError.h"

#include <sqlite3.h>

#include <algorithm>
#include <string>
#include <utility>

namespace fernhollow {
namespace {

constexpr const char* createDailyCounts = "CREATE TABLE IF NOT EXISTS daily_counts (\n"
                                          "  day TEXT PRIMARY KEY NOT NULL,\n"
                                          "  count INTEGER NOT NULL,\n"
                                          "  updated_at INTEGER NOT NULL\n"
                                          ");";
constexpr const char* createHourlyCounts = "CREATE TABLE IF NOT EXISTS hourly_counts (\n"
                                           "  day TEXT NOT NULL,\n"
                                           "  hour INTEGER NOT NULL,\n"
                                           "  count INTEGER NOT NULL,\n"
                                           "  updated_at INTEGER NOT NULL,\n"
                                           "  PRIMARY KEY (day, hour)\n"
                                           ");";
constexpr const char* createAppHourCounts = "CREATE TABLE IF NOT EXISTS app_hour_counts (\n"
                                            "  day TEXT NOT NULL,\n"
                                            "  hour INTEGER NOT NULL,\n"
                                            "  bundle_id TEXT NOT NULL,\n"
                                            "  count INTEGER NOT NULL,\n"
                                            "  updated_at INTEGER NOT NULL,\n"
                                            "  PRIMARY KEY (day, hour, bundle_id)\n"
                                            ");";
constexpr const char* createAppRegistry = "CREATE TABLE IF NOT EXISTS app_registry (\n"
                                          "  bundle_id TEXT PRIMARY KEY NOT NULL,\n"
                                          "  app_name TEXT NOT NULL,\n"
                                          "  first_seen INTEGER NOT NULL,\n"
                                          "  is_hidden INTEGER NOT NULL DEFAULT 0\n"
                                          ");";

constexpr const char* addToDay = "INSERT INTO daily_counts(day, count, updated_at) VALUES (?, ?, ?) "
                                 "ON CONFLICT(day) DO UPDATE SET count = count + excluded.count, "
                                 "updated_at = excluded.updated_at;";
constexpr const char* addToHour = "INSERT INTO hourly_counts(day, hour, count, updated_at) "
                                  "VALUES (?, ?, ?, ?) "
                                  "ON CONFLICT(day, hour) DO UPDATE SET count = count + excluded.count, "
                                  "updated_at = excluded.updated_at;";
constexpr const char* addToAppHour = "INSERT INTO app_hour_counts(day, hour, bundle_id, count, updated_at) "
                                     "VALUES (?, ?, ?, ?, ?) "
                                     "ON CONFLICT(day, hour, bundle_id) DO UPDATE SET "
                                     "count = count + excluded.count, updated_at = excluded.updated_at;";
constexpr const char* addToRegistry = "INSERT INTO app_registry(bundle_id, app_name, first_seen, is_hidden) "
                                      "VALUES (?, ?, ?, 0) "
                                      "ON CONFLICT(bundle_id) DO UPDATE SET app_name = excluded.app_name;";

bool isHour(int hour) {
    return static_cast<unsigned>(hour) < 24;
}

template<class Row, class Unsynced, class PlaceOf>
std::vector<Row> withoutUnsynced(std::vector<Row> rows, const Unsynced& unsynced, PlaceOf placeOf) {
    for (Row& row : rows) {
        const auto found = unsynced.find(placeOf(row));
        row.count -= found != unsynced.end() ? found->second : 0;
    }
    std::erase_if(rows, [](const Row& row) { return row.count <= 0; });
    return rows;
}

} // namespace

DailyCountsDatabase::DailyCountsDatabase(const std::filesystem::path& file, const DatabaseOpening& opening)
    : connection_(file) {
    connection_.setPatience(opening.patience);
    connection_.exec("PRAGMA journal_mode=WAL;");
    connection_.exec("PRAGMA synchronous=NORMAL;");
    connection_.exec(createDailyCounts);
    connection_.exec(createHourlyCounts);
    connection_.exec(createAppHourCounts);
    connection_.exec(createAppRegistry);
    connection_.syncLog(); // a killed program may have left part of the log in the system's memory
    if (opening.owner != 0) {
        claim(opening.owner);
    }
    if (!opening.device.empty()) {
        followCopies(opening, file);
    } else if (opening.completesDays) {
        completeDays();
    }
    place_.emplace(file);
}

void DailyCountsDatabase::claim(std::int32_t owner) {
    int found = 0;
    {
        Statement mark(connection_, "PRAGMA application_id;");
        found = mark.step() ? mark.integer(0) : 0;
    }
    if (found == 0) {
        connection_.exec(("PRAGMA application_id=" + std::to_string(owner) + ";").c_str());
    } else if (found != owner) {
        throw ForeignDatabaseError(SQLITE_AUTH, "the database is another account's");
    }
}

void DailyCountsDatabase::completeDays() {
    CountBatch missing;
    std::int64_t updatedAt = 0;
    {
        const auto raised = sent_ ? sent_->raised() : SentCounts::Counts{};
        Statement select(connection_, "SELECT day, SUM(count) - IFNULL((SELECT count FROM daily_counts "
                                      "WHERE daily_counts.day = hourly_counts.day), 0), "
                                      "MAX(updated_at) FROM hourly_counts WHERE count BETWEEN 1 AND ? "
                                      "GROUP BY day;");
        select.bind(1, maximumDeviceDay);
        while (select.step()) {
            const DayKey day(select.text(0).value_or(""));
            const auto inNoHour = raised.find(day);
            const auto lacking = select.integer64(1) + (inNoHour != raised.end() ? inNoHour->second : 0);
            if (lacking > 0 && !day.rawValue.empty()) {
                missing.days[day] = lacking;
                updatedAt = std::max(updatedAt, select.integer64(2));
            }
        }
    }
    if (!missing.isEmpty()) {
        const DurableCommits durable(connection_);
        write(missing, updatedAt);
    }
}

void DailyCountsDatabase::write(const CountBatch& counts, std::int64_t updatedAt) {
    Transaction transaction(connection_);
    add(counts, updatedAt);
    transaction.commit();
    unsynced_.add({.days = {}, .hours = counts.hours, .applications = counts.applications, .names = {}});
}

void DailyCountsDatabase::expectInPlace() {
    if (connection_.hasMoved()) {
        place_->clear();
        throw DatabaseMovedError(SQLITE_READONLY_DBMOVED, "the database was moved or deleted");
    }
}

// One sync of the log for each flush. It also covers the presses that were appended to the log since the
// last sync, because a sync is of a file, not of a transaction. Permanent full synchronisation would sync at
// each press. A checkpoint instead would sync twice and write every page once more. A sync of our own after
// the commit could fail when the commit can no longer be undone, and its presses would be added again.
void DailyCountsDatabase::writeDurably(const CountBatch& counts, std::int64_t updatedAt) {
    expectInPlace();
    if (counts.isEmpty()) {
        connection_.syncLog();
    } else {
        const DurableCommits durable(connection_);
        write(counts, updatedAt);
    }
    unsynced_ = {};
    if (!place_->hasLog()) {
        // The log was deleted, so its contents move into the database file, which still has a name.
        connection_.exec("PRAGMA wal_checkpoint(TRUNCATE);");
    }
}

void DailyCountsDatabase::add(const CountBatch& counts, std::int64_t updatedAt) {
    if (!counts.names.empty()) {
        Statement insert(connection_, addToRegistry);
        for (const auto& [bundleId, name] : counts.names) {
            insert.reset();
            insert.bind(1, bundleId).bind(2, name).bind(3, updatedAt).run();
        }
    }
    if (!counts.applications.empty()) {
        Statement insert(connection_, addToAppHour);
        for (const auto& [place, count] : counts.applications) {
            const auto& [day, hour, bundleId] = place;
            insert.reset();
            insert.bind(1, day.rawValue)
                .bind(2, hour)
                .bind(3, bundleId)
                .bind(4, count)
                .bind(5, updatedAt)
                .run();
        }
    }
    if (!counts.hours.empty()) {
        Statement insert(connection_, addToHour);
        for (const auto& [place, count] : counts.hours) {
            insert.reset();
            insert.bind(1, place.first.rawValue)
                .bind(2, place.second)
                .bind(3, count)
                .bind(4, updatedAt)
                .run();
        }
    }
    if (!counts.days.empty()) {
        Statement insert(connection_, addToDay);
        for (const auto& [day, count] : counts.days) {
            insert.reset();
            insert.bind(1, day.rawValue).bind(2, count).bind(3, updatedAt).run();
        }
    }
}

void DailyCountsDatabase::increment(const DayKey& day, std::int64_t by, std::int64_t updatedAt) {
    if (by <= 0) {
        return;
    }
    Statement(connection_, addToDay).bind(1, day.rawValue).bind(2, by).bind(3, updatedAt).run();
}

void DailyCountsDatabase::incrementHourly(const DayKey& day, int hour, std::int64_t by,
                                          std::int64_t updatedAt) {
    if (by <= 0 || !isHour(hour)) {
        return;
    }
    expectInPlace(); // comparing inode numbers is cheap, and a press written to a deleted file is lost
    Statement(connection_, addToHour)
        .bind(1, day.rawValue)
        .bind(2, hour)
        .bind(3, by)
        .bind(4, updatedAt)
        .run();
    unsynced_.hours[{day, hour}] += by;
}

void DailyCountsDatabase::overwrite(const DayKey& day, std::int64_t count, std::int64_t updatedAt) {
    Statement(connection_, "INSERT INTO daily_counts(day, count, updated_at) VALUES (?, ?, ?) "
                           "ON CONFLICT(day) DO UPDATE SET count = excluded.count, "
                           "updated_at = excluded.updated_at;")
        .bind(1, day.rawValue)
        .bind(2, count)
        .bind(3, updatedAt)
        .run();
}

void DailyCountsDatabase::replaceHourly(const DayKey& day, const std::map<int, std::int64_t>& counts,
                                        std::int64_t updatedAt) {
    Transaction transaction(connection_);
    Statement(connection_, "DELETE FROM hourly_counts WHERE day = ?;").bind(1, day.rawValue).run();
    if (!counts.empty()) {
        Statement insert(connection_,
                         "INSERT INTO hourly_counts(day, hour, count, updated_at) VALUES (?, ?, ?, ?) "
                         "ON CONFLICT(day, hour) DO UPDATE SET count = excluded.count, "
                         "updated_at = excluded.updated_at;");
        for (const auto& [hour, count] : counts) {
            if (!isHour(hour)) {
                continue;
            }
            insert.reset();
            insert.bind(1, day.rawValue).bind(2, hour).bind(3, count).bind(4, updatedAt).run();
        }
    }
    try {
        transaction.commit();
    } catch (const DailyCountsStoreError&) {
        // The next replacement of the day writes the same rows again; nothing more can be done here.
        return;
    }
}

std::int64_t DailyCountsDatabase::count(const DayKey& day) {
    Statement select(connection_, "SELECT count FROM daily_counts WHERE day = ? LIMIT 1;");
    select.bind(1, day.rawValue);
    return select.step() ? select.integer64(0) : 0;
}

std::vector<DailyCountRow> DailyCountsDatabase::fetchCounts(const DayKey& from, const DayKey& to) {
    Statement select(connection_,
                     "SELECT day, count FROM daily_counts WHERE day >= ? AND day <= ? ORDER BY day ASC;");
    select.bind(1, from.rawValue).bind(2, to.rawValue);
    std::vector<DailyCountRow> rows;
    while (select.step()) {
        if (auto day = select.text(0)) {
            rows.push_back({DayKey(std::move(*day)), select.integer64(1)});
        }
    }
    return rows;
}

std::vector<HourlyCountRow> DailyCountsDatabase::fetchHourlyCounts(const DayKey& day) {
    Statement select(connection_,
                     "SELECT day, hour, count FROM hourly_counts WHERE day = ? ORDER BY hour ASC;");
    select.bind(1, day.rawValue);
    std::vector<HourlyCountRow> rows;
    while (select.step()) {
        if (auto text = select.text(0)) {
            rows.push_back({DayKey(std::move(*text)), select.integer(1), select.integer64(2)});
        }
    }
    return rows;
}

void DailyCountsDatabase::incrementAppHourly(const DayKey& day, int hour, const std::string& bundleId,
                                             std::int64_t by, std::int64_t updatedAt) {
    if (by <= 0 || !isHour(hour)) {
        return;
    }
    Statement(connection_, addToAppHour)
        .bind(1, day.rawValue)
        .bind(2, hour)
        .bind(3, bundleId)
        .bind(4, by)
        .bind(5, updatedAt)
        .run();
    unsynced_.applications[{day, hour, bundleId}] += by;
}

std::vector<HourlyCountRow> DailyCountsDatabase::fetchDurableHourlyCounts(const DayKey& day) {
    return withoutUnsynced(fetchHourlyCounts(day), unsynced_.hours,
                           [](const HourlyCountRow& row) { return CountBatch::Hour(row.day, row.hour); });
}

std::vector<AppHourlyCountRow> DailyCountsDatabase::fetchDurableAppHourlyCounts(const DayKey& day) {
    return withoutUnsynced(fetchAppHourlyCounts(day), unsynced_.applications,
                           [](const AppHourlyCountRow& row) {
                               return CountBatch::ApplicationHour(row.day, row.hour, row.bundleId);
                           });
}

std::vector<AppHourlyCountRow> DailyCountsDatabase::fetchAppHourlyCounts(const DayKey& day) {
    Statement select(connection_, "SELECT day, hour, bundle_id, count FROM app_hour_counts WHERE day = ? "
                                  "ORDER BY hour ASC, bundle_id ASC;");
    select.bind(1, day.rawValue);
    std::vector<AppHourlyCountRow> rows;
    while (select.step()) {
        auto text = select.text(0);
        auto bundleId = select.text(2);
        if (text && bundleId) {
            rows.push_back(
                {DayKey(std::move(*text)), select.integer(1), std::move(*bundleId), select.integer64(3)});
        }
    }
    return rows;
}

std::unordered_map<std::string, std::int64_t> DailyCountsDatabase::fetchAppDailyCounts(const DayKey& day) {
    Statement select(connection_, "SELECT bundle_id, SUM(count) FROM app_hour_counts WHERE day = ? "
                                  "GROUP BY bundle_id;");
    select.bind(1, day.rawValue);
    std::unordered_map<std::string, std::int64_t> totals;
    while (select.step()) {
        if (auto bundleId = select.text(0)) {
            totals.emplace(std::move(*bundleId), select.integer64(1));
        }
    }
    return totals;
}

void DailyCountsDatabase::registerApp(const std::string& bundleId, const std::string& appName,
                                      std::int64_t firstSeen) {
    Statement(connection_, addToRegistry).bind(1, bundleId).bind(2, appName).bind(3, firstSeen).run();
}

std::vector<AppRegistryRow> DailyCountsDatabase::fetchAppRegistry() {
    Statement select(connection_, "SELECT bundle_id, app_name, first_seen, is_hidden FROM app_registry "
                                  "ORDER BY app_name ASC;");
    std::vector<AppRegistryRow> rows;
    while (select.step()) {
        auto bundleId = select.text(0);
        auto appName = select.text(1);
        if (bundleId && appName) {
            rows.push_back(
                {std::move(*bundleId), std::move(*appName), select.integer64(2), select.integer(3) != 0});
        }
    }
    return rows;
}

void DailyCountsDatabase::setAppHidden(const std::string& bundleId, bool isHidden) {
    Statement(connection_, "UPDATE app_registry SET is_hidden = ? WHERE bundle_id = ?;")
        .bind(1, isHidden ? 1 : 0)
        .bind(2, bundleId)
        .run();
}

std::optional<std::string> DailyCountsDatabase::getAppName(const std::string& bundleId) {
    Statement select(connection_, "SELECT app_name FROM app_registry WHERE bundle_id = ? LIMIT 1;");
    select.bind(1, bundleId);
    return select.step() ? select.text(0) : std::nullopt;
}

} // namespace fernhollow
