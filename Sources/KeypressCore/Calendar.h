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
/// The calendar is Gregorian in every locale, because day keys are shared between machines. Keeps a
/// working ICU calendar, so one object belongs to one thread; copies are independent.
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

    /// The calendar of the zone that this one is in now, for many steps without a look at the system.
    Calendar snapshot() const;

    /// The calendar of the zone with the IANA name `zone`; an unknown name stands for UTC.
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

    /// The instant that the components describe; numbers out of range are carried over leniently.
    /// A time that a clock change skips or repeats gives the next existing or the first one.
    std::optional<Instant> date(const Components& components) const;

    std::optional<Instant> addingDays(Instant instant, int days) const;

    /// Whole days from `from` to `to`, negative when `to` is the earlier one.
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
