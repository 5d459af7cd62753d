#pragma once

#include "Support/Clock.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace fernhollow {

/// Decides whether a line that could be logged every second is worth logging again, so that it does not
/// fill the log. Owned by the object that logs, on its thread.
class RepeatedLog {
public:
    /// True the first time, and when `subject` differs from the one at the last true answer. When only
    /// `detail` differs, such as a count that grows with each press, true once ten minutes have passed.
    bool isDue(std::string_view subject, std::int64_t detail, Instant now);

    /// What was logged is over: the next isDue() returns true.
    void clear() { last_.reset(); }

private:
    struct Logged {
        std::string subject;
        std::int64_t detail = 0;
        Instant at;
    };
    std::optional<Logged> last_;
};

} // namespace fernhollow
