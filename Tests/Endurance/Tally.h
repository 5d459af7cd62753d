#pragma once

#include "Endurance/Backend.h"
#include "Support/Clock.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fernhollow::tests {

/// Up to when the presses that a fault may take with it were made.
enum class Loss {
    none,
    unasked,    ///< those that the program had no turn of its event loop for
    lastSecond, ///< those since the last write of the applications
    lastFlush,  ///< those since the last flush
};

/// A row that is not as it has to be.
struct Difference {
    std::string where; ///< "machine" or "backend"
    Place place;
    std::int64_t least = 0;
    std::int64_t most = 0;
    std::int64_t found = 0;
};

/// What was pressed on one machine under one identity and account, and so what each row has to say.
///
/// A row may never say more. It may say less by what the faults since the last comparison were allowed to
/// take. The machine feeds it, and reports what became safe; the life asks it to compare.
class Tally {
public:
    /// Counts presses made at `at` of the machine's monotonic clock. Without an application, those in the
    /// program's own windows.
    void press(Moment at, const std::string& day, int hour, const std::string& app, std::int64_t count);

    /// Every turn that was due at `now` has come to its end; `isSaving` unless the disk refuses.
    void settled(Moment now, bool isSaving);

    void allow(Loss daysAndHours, Loss applications);
    /// The database from `firstDay` on is gone. The backend gives a day back as far as it is in `known`, and
    /// what is counted from now on is added.
    void allowLossOfFile(const std::string& firstDay, const Rows& known);
    /// Nothing more is sent; the backend keeps what it has.
    void retire(const Rows& known);

    struct Expectation {
        bool isSynced = false;      ///< the backend has had the time to learn all
        std::string firstDay;       ///< of the comparison
        std::string firstRecentDay; ///< what could not be sent before stays unsent, but for days
    };
    /// The first difference.
    std::optional<Difference> compare(const std::optional<Rows>& local, const Rows& remote,
                                      const Expectation& expectation);

    bool isRetired() const { return isRetired_; }

private:
    struct Row {
        std::int64_t pressed = 0;
        std::int64_t mayLack = 0;
        bool hasLostFile = false;
        std::int64_t known = 0; // to the backend when the file was lost
        std::int64_t lost = 0;  // of what was pressed, with the file
        bool wasSent = false;

        std::int64_t least() const;
    };
    struct Fresh {
        Moment at;
        std::vector<Place> places;
        std::int64_t count = 0;
        Loss risk = Loss::unasked; // the least fault that takes it
    };

    std::optional<Difference> compareRow(const Place& place, const Row& row, const std::optional<Rows>& local,
                                         const Rows& remote, const Expectation& expectation) const;

    std::map<Place, Row> rows_;
    std::vector<Fresh> fresh_; // not durable yet
    bool isRetired_ = false;
};

} // namespace fernhollow::tests
