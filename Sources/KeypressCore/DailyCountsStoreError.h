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
    const char* what() const noexcept override { return description_.c_str(); }

private:
    int code_;
    std::string message_;
    std::string description_;
};

} // namespace fernhollow
