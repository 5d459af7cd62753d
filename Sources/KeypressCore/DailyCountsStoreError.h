#pragma once

#include <exception>
#include <string>

namespace fernhollow {

/// Why an operation of the store failed: SQLite's result code and its message.
class DailyCountsStoreError : public std::exception {
public:
    DailyCountsStoreError(int code, std::string message)
        : code_(code), message_(std::move(message)),
          description_("SQLiteError(" + std::to_string(code_) + "): " + message_) {}

    int code() const { return code_; }
    const std::string& message() const { return message_; }
    /// True when the file is not a database or is damaged; false when it only cannot be used for now.
    bool isUnreadable() const;
    const char* what() const noexcept override { return description_.c_str(); }

private:
    int code_;
    std::string message_;
    std::string description_;
};

/// The database's file was moved, deleted or replaced. What was written since the last durable write may be
/// lost.
class DatabaseMovedError : public DailyCountsStoreError {
public:
    using DailyCountsStoreError::DailyCountsStoreError;
};

/// The database belongs to another account.
class ForeignDatabaseError : public DailyCountsStoreError {
public:
    using DailyCountsStoreError::DailyCountsStoreError;
};

} // namespace fernhollow
