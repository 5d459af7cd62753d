#pragma once

#include "Support/Clock.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace fernhollow {

/// Keeps what is looked at every second from filling the log: says whether lines that could be logged again
/// are worth it. Owned by the object that logs, on its thread.
class RepeatedLog {
public:
    /// True the first time, when `subject` is another one than at the last true answer, and when `detail`,
    /// such as a count that grows with each press, is and ten minutes have passed.
    bool isDue(std::string_view subject, std::int64_t detail, Instant now);

    /// The next question is answered with true: what was logged is over.
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
