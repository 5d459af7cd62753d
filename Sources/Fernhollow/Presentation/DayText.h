#pragma once

#include "KeypressCore/Calendar.h"
#include "Support/UserLocale.h"

#include <memory>
#include <string>
#include <string_view>

namespace fernhollow {

/// Days as texts of a locale, in its digits and its calendar. The day is the one on which an instant falls
/// in the system's present time zone. One thread only.
class DayText {
public:
    /// For windows with English texts: words in English, digits as the user writes them.
    DayText();
    explicit DayText(std::string_view locale);
    ~DayText();

    std::string fullDate(Instant day) const;    ///< "Thursday, March 5, 2026"
    std::string mediumDate(Instant day) const;  ///< "Mar 5, 2026"
    std::string dayAndMonth(Instant day) const; ///< "05/03", in every locale

    /// How far the day is from that of `now`, in calendar days: "3 days ago", "1 week ago".
    std::string fromNow(Instant day, Instant now) const;

private:
    struct Formatters;
    std::unique_ptr<Formatters> formatters_;
    Calendar calendar_ = Calendar::autoupdatingCurrent();
};

} // namespace fernhollow
