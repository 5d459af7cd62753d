#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace fernhollow {

/// How a database is to be opened.
struct DatabaseOpening {
    /// The account's mark for the file; 0 for none. A file with another mark is refused with a
    /// ForeignDatabaseError.
    std::int32_t owner = 0;
    /// The identity under which the counts are sent to the backend. When it is empty, the store does not note
    /// what was sent.
    std::string device{};
    /// Whether to raise each day to the sum of its hours. Hours are ahead of their day while a flush is
    /// due, or after a program was killed before a flush. So set this only when no presses wait to be added
    /// to the days.
    bool completesDays = false;
    /// How long a statement waits for another process's lock. The default is enough for a backup's
    /// transaction.
    std::chrono::milliseconds patience{500};
};

} // namespace fernhollow
