#include "KeypressCore/DailyCountsDatabase.h"

#include "KeypressCore/DailyCountsStoreError.h"

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

bool isHour(int hour) {
    return static_cast<unsigned>(hour) < 24;
}

} // namespace

DailyCountsDatabase::DailyCountsDatabase(const std::filesystem::path& file) : connection_(file) {
    connection_.exec("PRAGMA journal_mode=WAL;");
    connection_.exec("PRAGMA synchronous=NORMAL;");
    connection_.exec(createDailyCounts);
    connection_.exec(createHourlyCounts);
    connection_.exec(createAppHourCounts);
    connection_.exec(createAppRegistry);
}

void DailyCountsDatabase::increment(const DayKey& day, std::int64_t by, std::int64_t updatedAt) {
    if (by <= 0) {
        return;
    }
    Statement(connection_, "INSERT INTO daily_counts(day, count, updated_at) VALUES (?, ?, ?) "
                           "ON CONFLICT(day) DO UPDATE SET count = count + excluded.count, "
                           "updated_at = excluded.updated_at;")
        .bind(1, day.rawValue)
        .bind(2, by)
        .bind(3, updatedAt)
        .run();
}

void DailyCountsDatabase::incrementHourly(const DayKey& day, int hour, std::int64_t by,
                                          std::int64_t updatedAt) {
    if (by <= 0 || !isHour(hour)) {
        return;
    }
    Statement(connection_, "INSERT INTO hourly_counts(day, hour, count, updated_at) VALUES (?, ?, ?, ?) "
                           "ON CONFLICT(day, hour) DO UPDATE SET count = count + excluded.count, "
                           "updated_at = excluded.updated_at;")
        .bind(1, day.rawValue)
        .bind(2, hour)
        .bind(3, by)
        .bind(4, updatedAt)
        .run();
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
        // The next replacement of the day writes the same rows again; nobody could do more about it here.
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
    Statement(connection_, "INSERT INTO app_hour_counts(day, hour, bundle_id, count, updated_at) "
                           "VALUES (?, ?, ?, ?, ?) "
                           "ON CONFLICT(day, hour, bundle_id) DO UPDATE SET count = count + excluded.count, "
                           "updated_at = excluded.updated_at;")
        .bind(1, day.rawValue)
        .bind(2, hour)
        .bind(3, bundleId)
        .bind(4, by)
        .bind(5, updatedAt)
        .run();
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
    Statement(connection_, "INSERT INTO app_registry(bundle_id, app_name, first_seen, is_hidden) "
                           "VALUES (?, ?, ?, 0) "
                           "ON CONFLICT(bundle_id) DO UPDATE SET app_name = excluded.app_name;")
        .bind(1, bundleId)
        .bind(2, appName)
        .bind(3, firstSeen)
        .run();
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
