#pragma once

#include "Support/Clock.h"
#include "Support/UserLocale.h"

#include <memory>
#include <string>
#include <string_view>

namespace fernhollow {

/// How long ago something was, in a locale's words: "3 days ago", and "5 min. ago" or "5 minutes ago".
///
/// It names only the largest unit that has passed in full. Months and years are those of the
/// calendar in UTC, so that the answer depends on the two instants alone. One thread only.
class RelativeTime {
public:
    enum class Units {
        abbreviated, ///< "5 min. ago"
        full,        ///< "5 minutes ago"
    };

    explicit RelativeTime(std::string_view locale = englishLocale("LC_TIME"),
                          Units units = Units::abbreviated);
    ~RelativeTime();

    std::string operator()(Instant then, Instant now) const;

private:
    struct Formatter;
    std::unique_ptr<Formatter> formatter_;
};

} // namespace fernhollow
