#include "KeypressCore/SentCounts.h"

#include "KeypressCore/DailyCountsStoreError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

constexpr const char* createSentCounts = "CREATE TABLE IF NOT EXISTS sent_counts (\n"
                                         "  day TEXT PRIMARY KEY NOT NULL,\n"
                                         "  remote INTEGER NOT NULL DEFAULT 0,\n"
                                         "  local INTEGER NOT NULL DEFAULT 0,\n"
                                         "  copied INTEGER NOT NULL DEFAULT 0,\n"
                                         "  raised INTEGER NOT NULL DEFAULT 0\n"
                                         ");";
constexpr const char* createTakenRows = "CREATE TABLE IF NOT EXISTS taken_rows (\n"
                                        "  day TEXT NOT NULL,\n"
                                        "  hour INTEGER NOT NULL,\n"
                                        "  app TEXT NOT NULL,\n"
                                        "  value TEXT NOT NULL,\n"
                                        "  PRIMARY KEY (day, hour, app)\n"
                                        ") WITHOUT ROWID;";
// One row: whose counts these are, where both files were, and the raise that is under way.
constexpr const char* createOrigin = "CREATE TABLE IF NOT EXISTS origin (\n"
                                     "  device TEXT PRIMARY KEY NOT NULL,\n"
                                     "  places TEXT NOT NULL DEFAULT '',\n"
                                     "  is_copy INTEGER NOT NULL DEFAULT 0,\n"
                                     "  mark INTEGER NOT NULL DEFAULT 0,\n"
                                     "  day TEXT,\n"
                                     "  raised_by INTEGER NOT NULL DEFAULT 0\n"
                                     ");";

/// Tells a file from its copies: they have another number, or were created at another time.
std::string placeOf(const fs::path& file) {
    struct statx found{};
    if (::statx(AT_FDCWD, file.c_str(), 0, STATX_INO | STATX_BTIME, &found) != 0) {
        return {};
    }
    return std::to_string(found.stx_ino) + "@" + std::to_string(found.stx_btime.tv_sec) + "." +
           std::to_string(found.stx_btime.tv_nsec);
}

} // namespace

fs::path SentCounts::fileOf(fs::path database) {
    return database += "-sent";
}

SentCounts::SentCounts(const fs::path& database, const std::string& device)
    : database_(database), device_(device) {
    const fs::path file = fileOf(database);
    try {
        open(file, device);
    } catch (const DailyCountsStoreError& error) {
        if (!error.isUnreadable()) {
            throw;
        }
        connection_.reset();
        for (const char* suffix : {"", "-wal", "-shm"}) {
            std::error_code ignored;
            fs::remove(file.native() + suffix, ignored);
        }
        open(file, device);
    }
}

void SentCounts::open(const fs::path& file, const std::string& device) {
    connection_.emplace(file);
    connection_->exec("PRAGMA journal_mode=WAL;");
    connection_->exec("PRAGMA synchronous=FULL;");
    Transaction transaction(*connection_);
    connection_->exec(createSentCounts);
    connection_->exec(createTakenRows);
    connection_->exec(createOrigin);
    for (const char* forget :
         {"DELETE FROM sent_counts WHERE EXISTS (SELECT 1 FROM origin WHERE device <> ?);",
          "DELETE FROM taken_rows WHERE EXISTS (SELECT 1 FROM origin WHERE device <> ?);"}) {
        Statement(*connection_, forget).bind(1, device).run();
    }
    Statement(*connection_, "DELETE FROM origin WHERE device <> ?;").bind(1, device).run();
    Statement(*connection_, "INSERT OR IGNORE INTO origin(device) VALUES (?);").bind(1, device).run();
    transaction.commit();
}

void SentCounts::endRaise(int mark) {
    Transaction transaction(*connection_);
    Statement(*connection_, "UPDATE sent_counts SET local = local + raised_by, copied = copied + raised_by, "
                            "raised = raised + raised_by FROM origin "
                            "WHERE origin.day = sent_counts.day AND origin.mark = ?;")
        .bind(1, mark)
        .run();
    connection_->exec("UPDATE origin SET day = NULL WHERE day IS NOT NULL;");
    transaction.commit();
}

std::set<DayKey> SentCounts::rolledBack(const Counts& counts) const {
    std::set<DayKey> days;
    Statement select(*connection_, "SELECT day, local FROM sent_counts WHERE local > 0;");
    while (select.step()) {
        const DayKey day(select.text(0).value_or(""));
        const auto found = counts.find(day);
        if ((found != counts.end() ? found->second : 0) < select.integer64(1)) {
            days.insert(day);
        }
    }
    return days;
}

auto SentCounts::raised() const -> Counts {
    Counts raised;
    Statement select(*connection_, "SELECT day, raised FROM sent_counts WHERE raised > 0;");
    while (select.step()) {
        raised[DayKey(select.text(0).value_or(""))] = select.integer64(1);
    }
    return raised;
}

void SentCounts::noteRaised(const DayKey& day, std::int64_t raised) {
    Statement(*connection_, "UPDATE sent_counts SET raised = ? WHERE day = ?;")
        .bind(1, raised)
        .bind(2, day.rawValue)
        .run();
}

void SentCounts::settle(const Counts& counts, const std::set<DayKey>& rolledBack) {
    const std::string now = places();
    std::string before;
    {
        Statement select(*connection_, "SELECT places FROM origin;");
        before = select.step() ? select.text(0).value_or("") : "";
    }
    if (now == before && rolledBack.empty()) {
        return;
    }
    Transaction transaction(*connection_);
    connection_->exec("DELETE FROM taken_rows;");
    for (const DayKey& day : rolledBack) {
        const auto found = counts.find(day);
        Statement(*connection_, "UPDATE sent_counts SET local = ?1, copied = ?1 WHERE day = ?2;")
            .bind(1, found != counts.end() ? found->second : 0)
            .bind(2, day.rawValue)
            .run();
    }
    if (now != before) {
        Statement copy(*connection_, "INSERT INTO sent_counts(day, copied) VALUES (?, ?) "
                                     "ON CONFLICT(day) DO UPDATE SET copied = excluded.copied;");
        for (auto day = counts.begin(); !before.empty() && day != counts.end(); ++day) {
            copy.reset();
            copy.bind(1, day->first.rawValue).bind(2, day->second).run();
        }
        Statement(*connection_, "UPDATE origin SET is_copy = is_copy OR places <> '', places = ?;")
            .bind(1, now)
            .run();
    }
    transaction.commit();
}

// Of both files: one of them can be restored without the other.
std::string SentCounts::places() const {
    return placeOf(database_) + " " + placeOf(fileOf(database_));
}

std::optional<SentCount> SentCounts::of(const DayKey& day) const {
    Statement select(*connection_, "SELECT remote, local, copied FROM sent_counts WHERE day = ?;");
    select.bind(1, day.rawValue);
    if (select.step()) {
        return SentCount{select.integer64(0), select.integer64(1), select.integer64(2)};
    }
    // Of a day that the copy does not know, the backend has nothing from here, whatever it has.
    Statement copy(*connection_, "SELECT 1 FROM origin WHERE is_copy <> 0;");
    return copy.step() ? std::optional(SentCount{}) : std::nullopt;
}

void SentCounts::note(const DayKey& day, std::int64_t count) {
    if (of(day) == SentCount{count, count, count}) {
        return; // without a sync of the disk
    }
    Statement(*connection_, "INSERT INTO sent_counts(day, remote, local, copied) VALUES (?1, ?2, ?2, ?2) "
                            "ON CONFLICT(day) DO UPDATE SET remote = ?2, local = ?2, copied = ?2;")
        .bind(1, day.rawValue)
        .bind(2, count)
        .run();
}

int SentCounts::announceRaise(const DayKey& day, std::int64_t by, int mark) {
    const int next = mark + 1;
    Transaction transaction(*connection_);
    Statement(*connection_, "INSERT OR IGNORE INTO sent_counts(day) VALUES (?);").bind(1, day.rawValue).run();
    Statement(*connection_, "UPDATE origin SET day = ?, raised_by = ?, mark = ?;")
        .bind(1, day.rawValue)
        .bind(2, by)
        .bind(3, next)
        .run();
    transaction.commit();
    return next;
}

// Another store may have taken the file over for another device meanwhile.
void SentCounts::noteTaken(const std::vector<TakenRow>& rows) {
    Transaction transaction(*connection_);
    Statement insert(*connection_, "INSERT OR REPLACE INTO taken_rows SELECT ?, ?, ?, ? "
                                   "WHERE EXISTS (SELECT 1 FROM origin WHERE device = ?);");
    for (const TakenRow& row : rows) {
        insert.reset();
        insert.bind(1, row.day.rawValue).bind(2, row.hour).bind(3, row.app).bind(4, row.value);
        insert.bind(5, device_).run();
    }
    transaction.commit();
}

std::vector<TakenRow> SentCounts::taken(const DayKey& day) const {
    std::vector<TakenRow> rows;
    Statement select(*connection_, "SELECT hour, app, value FROM taken_rows WHERE day = ?;");
    select.bind(1, day.rawValue);
    while (select.step()) {
        rows.push_back({day, select.integer(0), select.text(1).value_or(""), select.text(2).value_or("")});
    }
    return rows;
}

auto SentCounts::takenCounts() const -> Counts {
    Counts counts;
    Statement select(*connection_, "SELECT day, value FROM taken_rows WHERE hour = ? AND day <> '';");
    select.bind(1, TakenRow::noHour);
    while (select.step()) {
        counts[DayKey(select.text(0).value_or(""))] = select.integer64(1);
    }
    return counts;
}

void SentCounts::forgetTaken(const DayKey& from, const DayKey& to) {
    Statement(*connection_, "DELETE FROM taken_rows WHERE day BETWEEN ? AND ?;")
        .bind(1, from.rawValue)
        .bind(2, to.rawValue)
        .run();
}

void SentCounts::forgetTakenHours(const DayKey& before) {
    Statement(*connection_, "DELETE FROM taken_rows WHERE day < ? AND hour <> ?;")
        .bind(1, before.rawValue)
        .bind(2, TakenRow::noHour)
        .run();
}

} // namespace fernhollow
