#pragma once

#include "KeypressCore/Calendar.h"
#include "Support/UserLocale.h"

#include <memory>
#include <string>
#include <string_view>

namespace fernhollow {

/// Days as texts of a locale, in its digits and its calendar. The day is the one on which an instant falls
/// in the system's time zone, which is followed as it changes. One thread only.
class DayText {
public:
    explicit DayText(std::string_view locale = userLocale("LC_TIME"));
    ~DayText();

    std::string fullDate(Instant day) const;    ///< "Thursday, March 5, 2026"
    std::string mediumDate(Instant day) const;  ///< "Mar 5, 2026"
    std::string dayAndMonth(Instant day) const; ///< "05/03" everywhere

    /// How far the day lies from the one of `now`, by the calendar: "3 days ago", "1 week ago".
    std::string fromNow(Instant day, Instant now) const;

private:
    struct Formatters;
    std::unique_ptr<Formatters> formatters_;
    Calendar calendar_ = Calendar::autoupdatingCurrent();
};

} // namespace fernhollow
