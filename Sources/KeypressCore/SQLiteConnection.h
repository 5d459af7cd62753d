#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace fernhollow {

/// An open SQLite database. Every failure throws DailyCountsStoreError. Only the store uses it, one
/// thread at a time.
///
/// While another process holds the database's lock, a statement waits briefly for it. After one wait
/// in vain, statements do not wait for a while: work that arrives at the rate of key presses must
/// not pile up behind a lock that another process keeps.
class SQLiteConnection {
public:
    /// Opens the file read-write and creates it if it is missing.
    explicit SQLiteConnection(const std::filesystem::path& file);
    SQLiteConnection(const SQLiteConnection&) = delete;
    SQLiteConnection& operator=(const SQLiteConnection&) = delete;

    /// Sets how long statements wait for another process's lock; the next statement waits in any case.
    void setPatience(std::chrono::milliseconds patience);

    /// Runs statements that give no rows.
    void exec(const char* sql);

    /// Syncs the write-ahead log to the disk, whichever process wrote it.
    void syncLog();

    /// Whether the file was moved, deleted or replaced since it was opened.
    bool hasMoved() const;

    /// Throws DailyCountsStoreError with `code` and the connection's current message.
    [[noreturn]] void fail(int code) const;

private:
    friend class Statement;

    struct Close {
        void operator()(sqlite3* db) const;
    };

    static int onBusy(void* self, int attempts);

    std::unique_ptr<sqlite3, Close> db_;
    std::chrono::milliseconds patience_{500}; // enough for a short transaction, such as a backup's
    std::chrono::steady_clock::time_point impatientUntil_{};
};

/// A prepared statement, finalized when it leaves scope.
class Statement {
public:
    Statement(SQLiteConnection& connection, const char* sql);

    /// Positions count from 1. A text ends at its first NUL.
    Statement& bind(int position, const std::string& text);
    Statement& bind(int position, int value);
    Statement& bind(int position, std::int64_t value);

    /// True for a row, false when there are no more.
    bool step();

    /// Runs a statement that gives no rows.
    void run();
    void reset();

    /// Columns count from 0. An SQL NULL is an absent text.
    std::optional<std::string> text(int column) const;
    int integer(int column) const;
    std::int64_t integer64(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };

    SQLiteConnection& connection_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

/// While it is in scope, a commit returns once its changes and all earlier ones are on the disk.
///
/// Otherwise a commit leaves its changes in the system's memory, where they survive the end of this process
/// but not a power cut. A commit whose sync fails is undone as a whole, so that it can be tried again.
class DurableCommits {
public:
    explicit DurableCommits(SQLiteConnection& connection);
    ~DurableCommits();
    DurableCommits(const DurableCommits&) = delete;
    DurableCommits& operator=(const DurableCommits&) = delete;

private:
    SQLiteConnection& connection_;
};

/// A write transaction that is rolled back unless it was committed.
class Transaction {
public:
    explicit Transaction(SQLiteConnection& connection);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

private:
    SQLiteConnection& connection_;
    bool isOpen_ = true;
};

} // namespace fernhollow
