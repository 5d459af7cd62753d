#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace fernhollow::bare {

/// Ends the program after a failure, because later figures would mean nothing.
inline void expect(bool condition, sqlite3* db, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s: %s\n", what, sqlite3_errmsg(db));
        std::exit(EXIT_FAILURE);
    }
}

struct Close {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
};
using Database = std::unique_ptr<sqlite3, Close>;

/// Opens the file with the settings of our store.
inline Database open(const char* file) {
    sqlite3* handle = nullptr;
    const int code = sqlite3_open(file, &handle);
    Database db(handle);
    expect(code == SQLITE_OK, handle, file);
    sqlite3_exec(handle, "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;", nullptr, nullptr, nullptr);
    return db;
}

/// A newly prepared statement, with as little as possible around SQLite's own calls. Bound texts must
/// outlive it.
class Statement {
public:
    Statement(sqlite3* db, const char* sql) : db_(db) {
        expect(sqlite3_prepare_v2(db, sql, -1, &statement_, nullptr) == SQLITE_OK, db, sql);
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { sqlite3_finalize(statement_); }

    Statement& bind(int position, std::string_view text) {
        sqlite3_bind_text(statement_, position, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
        return *this;
    }
    Statement& bind(int position, std::int64_t value) {
        sqlite3_bind_int64(statement_, position, value);
        return *this;
    }

    /// Reads every column of every row. The sum keeps the compiler from optimising the reads away.
    std::int64_t run() {
        std::int64_t sum = 0;
        int code = SQLITE_DONE;
        while ((code = sqlite3_step(statement_)) == SQLITE_ROW) {
            for (int column = 0; column < sqlite3_column_count(statement_); ++column) {
                if (sqlite3_column_type(statement_, column) == SQLITE_TEXT) {
                    sum += *sqlite3_column_text(statement_, column);
                } else {
                    sum += sqlite3_column_int64(statement_, column);
                }
            }
        }
        expect(code == SQLITE_DONE, db_, "step");
        return sum;
    }

    void reset() { sqlite3_reset(statement_); }

private:
    sqlite3* db_;
    sqlite3_stmt* statement_ = nullptr;
};

inline constexpr const char* increment =
    "INSERT INTO daily_counts(day, count, updated_at) VALUES (?, ?, ?) "
    "ON CONFLICT(day) DO UPDATE SET count = count + excluded.count, updated_at = excluded.updated_at;";
inline constexpr const char* overwrite =
    "INSERT INTO daily_counts(day, count, updated_at) VALUES (?, ?, ?) "
    "ON CONFLICT(day) DO UPDATE SET count = excluded.count, updated_at = excluded.updated_at;";
inline constexpr const char* incrementHourly =
    "INSERT INTO hourly_counts(day, hour, count, updated_at) VALUES (?, ?, ?, ?) "
    "ON CONFLICT(day, hour) DO UPDATE SET count = count + excluded.count, "
    "updated_at = excluded.updated_at;";
inline constexpr const char* deleteHourly = "DELETE FROM hourly_counts WHERE day = ?;";
inline constexpr const char* insertHourly =
    "INSERT INTO hourly_counts(day, hour, count, updated_at) VALUES (?, ?, ?, ?) "
    "ON CONFLICT(day, hour) DO UPDATE SET count = excluded.count, updated_at = excluded.updated_at;";
inline constexpr const char* incrementAppHourly =
    "INSERT INTO app_hour_counts(day, hour, bundle_id, count, updated_at) VALUES (?, ?, ?, ?, ?) "
    "ON CONFLICT(day, hour, bundle_id) DO UPDATE SET count = count + excluded.count, "
    "updated_at = excluded.updated_at;";
inline constexpr const char* registerApp =
    "INSERT INTO app_registry(bundle_id, app_name, first_seen, is_hidden) VALUES (?, ?, ?, 0) "
    "ON CONFLICT(bundle_id) DO UPDATE SET app_name = excluded.app_name;";
inline constexpr const char* count = "SELECT count FROM daily_counts WHERE day = ? LIMIT 1;";
inline constexpr const char* fetchCounts =
    "SELECT day, count FROM daily_counts WHERE day >= ? AND day <= ? ORDER BY day ASC;";
inline constexpr const char* fetchHourlyCounts =
    "SELECT day, hour, count FROM hourly_counts WHERE day = ? ORDER BY hour ASC;";
inline constexpr const char* fetchAppHourlyCounts =
    "SELECT day, hour, bundle_id, count FROM app_hour_counts WHERE day = ? "
    "ORDER BY hour ASC, bundle_id ASC;";
inline constexpr const char* fetchAppRegistry =
    "SELECT bundle_id, app_name, first_seen, is_hidden FROM app_registry ORDER BY app_name ASC;";

} // namespace fernhollow::bare
