#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace fernhollow {

/// How a database is to be opened.
struct DatabaseOpening {
    /// Marks the file as one account's; 0 marks nothing. A file that bears another mark is refused with a
    /// ForeignDatabaseError.
    std::int32_t owner = 0;
    /// Under which identity the backend is given the counts. Empty where nothing is to be remembered of that.
    std::string device{};
    /// Raises each day to the sum of its hours. Only where nothing waits to be added to the days: hours are
    /// ahead of their day because a flush is due, or because a program was killed before it.
    bool completesDays = false;
    /// How long a statement waits for another process's lock; enough for a backup's transaction.
    std::chrono::milliseconds patience{500};
};

} // namespace fernhollow
