#pragma once

#include "Endurance/Backend.h"
#include "Support/Clock.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fernhollow::tests {

/// Which presses a fault may cost.
enum class Loss {
    none,
    unasked,    ///< those since the last turn of the program's event loop
    lastSecond, ///< those since the last write of the applications
    lastFlush,  ///< those since the last flush
};

/// A row that differs from the expected one.
struct Difference {
    std::string where; ///< "machine" or "backend"
    Place place;
    std::int64_t least = 0;
    std::int64_t most = 0;
    std::int64_t found = 0;
};

/// The presses on one machine under one identity and account, and so the expected count of each row.
///
/// A row may never have more. It may have less by what the faults since the last comparison were allowed
/// to cost. The machine reports presses and what became safe; the life asks for comparisons.
class Tally {
public:
    /// Counts presses at the time `at` of the machine's monotonic clock. Presses in the program's own
    /// windows have no application.
    void press(Moment at, const std::string& day, int hour, const std::string& app, std::int64_t count);

    /// Every turn that was due at `now` has ended. `isSaving` is false while the disk refuses writes.
    void settled(Moment now, bool isSaving);

    void allow(Loss daysAndHours, Loss applications);
    /// The database from `firstDay` on is lost. The backend gives back the counts in `known`, and presses
    /// from now on are added.
    void allowLossOfFile(const std::string& firstDay, const Rows& known);
    /// Nothing more is sent; the backend keeps what it has.
    void retire(const Rows& known);

    struct Expectation {
        bool isSynced = false;      ///< true when the backend has had the time to get every count
        std::string firstDay;       ///< of the comparison
        std::string firstRecentDay; ///< hours and applications of earlier days that were not sent stay unsent
    };
    /// The first difference; nothing when there is none.
    std::optional<Difference> compare(const std::optional<Rows>& local, const Rows& remote,
                                      const Expectation& expectation);

    bool isRetired() const { return isRetired_; }

private:
    struct Row {
        std::int64_t pressed = 0;
        std::int64_t mayLack = 0;
        bool hasLostFile = false;
        std::int64_t known = 0; // presses that the backend knew when the file was lost
        std::int64_t lost = 0;  // presses that were lost with the file
        bool wasSent = false;

        std::int64_t least() const;
    };
    struct Fresh {
        Moment at;
        std::vector<Place> places;
        std::int64_t count = 0;
        Loss risk = Loss::unasked; // the least fault that may cost these presses
    };

    std::optional<Difference> compareRow(const Place& place, const Row& row, const std::optional<Rows>& local,
                                         const Rows& remote, const Expectation& expectation) const;

    std::map<Place, Row> rows_;
    std::vector<Fresh> fresh_; // not durable yet
    bool isRetired_ = false;
};

} // namespace fernhollow::tests
