#pragma once

#include "Support/Clock.h"
#include "Support/SystemTimeZone.h"

#include <unicode/gregocal.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace fernhollow {

/// Gregorian calendar arithmetic in one time zone, or in the system's zone as it changes.
///
/// The calendar is Gregorian in every locale, because day keys are shared between machines. An
/// object keeps a working ICU calendar, so it belongs to one thread; copies are independent.
class Calendar {
public:
    struct Components {
        int year = 1970;
        int month = 1; ///< 1 to 12
        int day = 1;
        int hour = 0;
        int minute = 0;
        int second = 0;
    };

    /// The calendar of the system's time zone, which follows every change of it.
    static Calendar autoupdatingCurrent();

    /// A copy that stays in the present zone, for many steps without asking the system again.
    Calendar snapshot() const;

    /// The calendar of the zone with the IANA name `zone`; UTC when the name is unknown.
    explicit Calendar(std::string_view zone);

    Calendar(const Calendar& other);
    Calendar& operator=(const Calendar& other);
    Calendar(Calendar&&) noexcept;
    Calendar& operator=(Calendar&&) noexcept;
    ~Calendar();

    Components components(Instant instant) const;
    int hour(Instant instant) const;

    /// The first instant of the day, which is not midnight where a clock change skips midnight.
    Instant startOfDay(Instant instant) const;

    /// The instant that the components describe. Numbers out of range carry over into the larger
    /// unit. For a time that a clock change skips it is the next time that exists; for a repeated
    /// one the first. Empty when ICU fails.
    std::optional<Instant> date(const Components& components) const;

    std::optional<Instant> addingDays(Instant instant, int days) const;

    /// Whole days from `from` to `to`, negative when `to` is earlier.
    int wholeDays(Instant from, Instant to) const;

    /// 12:00:00 of the day of `instant`.
    std::optional<Instant> noon(Instant instant) const;

private:
    Calendar();
    icu::GregorianCalendar& at(Instant instant) const;
    icu::GregorianCalendar& current() const;

    mutable std::optional<SystemTimeZone> system_;
    mutable std::unique_ptr<icu::GregorianCalendar> working_;
};

} // namespace fernhollow
