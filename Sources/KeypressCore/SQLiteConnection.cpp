#include "KeypressCore/SQLiteConnection.h"

#include "KeypressCore/DailyCountsStoreError.h"

#include <sqlite3.h>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr auto busyPollInterval = 10ms;
constexpr auto impatience = 5s;

constexpr const char* unknownError = "Unknown sqlite error";

std::string orUnknown(const char* message) {
    return message != nullptr ? message : unknownError;
}

} // namespace

bool DailyCountsStoreError::isUnreadable() const {
    return code_ == SQLITE_NOTADB || code_ == SQLITE_CORRUPT;
}

void SQLiteConnection::Close::operator()(sqlite3* db) const {
    sqlite3_close(db);
}

SQLiteConnection::SQLiteConnection(const std::filesystem::path& file) {
    sqlite3* handle = nullptr;
    const int code = sqlite3_open(file.c_str(), &handle);
    db_.reset(handle);
    if (code != SQLITE_OK || handle == nullptr) {
        throw DailyCountsStoreError(code, "Failed to open database");
    }
    sqlite3_busy_handler(handle, &SQLiteConnection::onBusy, this);
}

int SQLiteConnection::onBusy(void* self, int attempts) {
    auto& connection = *static_cast<SQLiteConnection*>(self);
    const auto now = std::chrono::steady_clock::now();
    if (now < connection.impatientUntil_) {
        return 0;
    }
    if (attempts * busyPollInterval >= connection.patience_) {
        connection.impatientUntil_ = now + impatience;
        return 0;
    }
    sqlite3_sleep(static_cast<int>(busyPollInterval.count()));
    return 1;
}

void SQLiteConnection::setPatience(std::chrono::milliseconds patience) {
    patience_ = patience;
    impatientUntil_ = {};
}

void SQLiteConnection::exec(const char* sql) {
    char* handedBack = nullptr;
    const int code = sqlite3_exec(db_.get(), sql, nullptr, nullptr, &handedBack);
    const std::unique_ptr<char, decltype(&sqlite3_free)> message(handedBack, &sqlite3_free);
    if (code != SQLITE_OK) {
        throw DailyCountsStoreError(code, message ? message.get() : orUnknown(sqlite3_errmsg(db_.get())));
    }
}

void SQLiteConnection::syncLog() {
    sqlite3_file* log = nullptr;
    sqlite3_file_control(db_.get(), "main", SQLITE_FCNTL_JOURNAL_POINTER, static_cast<void*>(&log));
    sqlite3_int64 size = 0;
    if (log == nullptr || log->pMethods == nullptr || log->pMethods->xFileSize(log, &size) != SQLITE_OK ||
        size == 0) {
        return;
    }
    if (const int code = log->pMethods->xSync(log, SQLITE_SYNC_NORMAL); code != SQLITE_OK) {
        throw DailyCountsStoreError(code, "the log cannot be synced");
    }
}

bool SQLiteConnection::hasMoved() const {
    int hasMoved = 0;
    sqlite3_file_control(db_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
    return hasMoved != 0;
}

void SQLiteConnection::fail(int code) const {
    throw DailyCountsStoreError(code, orUnknown(sqlite3_errmsg(db_.get())));
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(SQLiteConnection& connection, const char* sql) : connection_(connection) {
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v2(connection.db_.get(), sql, -1, &statement, nullptr);
    statement_.reset(statement);
    if (code != SQLITE_OK) {
        connection.fail(code);
    }
}

Statement& Statement::bind(int position, const std::string& text) {
    const int code = sqlite3_bind_text(statement_.get(), position, text.c_str(), -1, SQLITE_TRANSIENT);
    if (code != SQLITE_OK) {
        connection_.fail(code);
    }
    return *this;
}

Statement& Statement::bind(int position, int value) {
    sqlite3_bind_int(statement_.get(), position, value);
    return *this;
}

Statement& Statement::bind(int position, std::int64_t value) {
    sqlite3_bind_int64(statement_.get(), position, value);
    return *this;
}

bool Statement::step() {
    const int code = sqlite3_step(statement_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        connection_.fail(code);
    }
    return code == SQLITE_ROW;
}

void Statement::run() {
    const int code = sqlite3_step(statement_.get());
    if (code != SQLITE_DONE) {
        connection_.fail(code);
    }
}

void Statement::reset() {
    sqlite3_reset(statement_.get());
}

std::optional<std::string> Statement::text(int column) const {
    const auto* text = sqlite3_column_text(statement_.get(), column);
    if (text == nullptr) {
        return std::nullopt;
    }
    return reinterpret_cast<const char*>(text);
}

int Statement::integer(int column) const {
    return sqlite3_column_int(statement_.get(), column);
}

std::int64_t Statement::integer64(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

DurableCommits::DurableCommits(SQLiteConnection& connection) : connection_(connection) {
    connection_.exec("PRAGMA synchronous=FULL;");
}

DurableCommits::~DurableCommits() {
    try {
        connection_.exec("PRAGMA synchronous=NORMAL;");
    } catch (const DailyCountsStoreError&) {
        return; // later commits are then durable without need, which is slower but safe
    }
}

Transaction::Transaction(SQLiteConnection& connection) : connection_(connection) {
    connection_.exec("BEGIN IMMEDIATE;");
}

Transaction::~Transaction() {
    if (!isOpen_) {
        return;
    }
    try {
        connection_.exec("ROLLBACK;");
    } catch (const DailyCountsStoreError&) {
        return; // another failure is under way, and SQLite may have rolled back by itself
    }
}

void Transaction::commit() {
    connection_.exec("COMMIT;");
    isOpen_ = false;
}

} // namespace fernhollow
