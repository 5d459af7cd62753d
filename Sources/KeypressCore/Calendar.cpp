#include "KeypressCore/Calendar.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace fernhollow {
namespace {

std::unique_ptr<icu::GregorianCalendar> makeWorking(icu::TimeZone* adoptedZone) {
    UErrorCode status = U_ZERO_ERROR;
    auto calendar = std::make_unique<icu::GregorianCalendar>(adoptedZone, icu::Locale::getRoot(), status);
    if (U_FAILURE(status)) {
        throw std::runtime_error(std::string("no calendar: ") + u_errorName(status));
    }
    // Gregorian for all times: dates on the wire know no switch from the Julian calendar.
    calendar->setGregorianChange(-std::numeric_limits<UDate>::max(), status);
    calendar->setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
    calendar->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
    return calendar;
}

UDate udate(Instant instant) {
    return std::chrono::duration<double, std::milli>(instant.time_since_epoch()).count();
}

std::optional<Instant> instant(UDate date) {
    using Milliseconds = std::chrono::duration<double, std::milli>;
    static const double limit = Milliseconds(Instant::duration::max()).count();
    if (!(std::abs(date) < limit)) {
        return std::nullopt;
    }
    return Instant(std::chrono::round<Instant::duration>(Milliseconds(date)));
}

std::optional<Instant> time(icu::GregorianCalendar& calendar) {
    UErrorCode status = U_ZERO_ERROR;
    const UDate date = calendar.getTime(status);
    return U_SUCCESS(status) ? instant(date) : std::nullopt;
}

int field(icu::GregorianCalendar& calendar, UCalendarDateFields which) {
    UErrorCode status = U_ZERO_ERROR;
    return calendar.get(which, status);
}

void setTimeOfDay(icu::GregorianCalendar& calendar, int hour, int minute, int second) {
    calendar.set(UCAL_HOUR_OF_DAY, hour);
    calendar.set(UCAL_MINUTE, minute);
    calendar.set(UCAL_SECOND, second);
    calendar.set(UCAL_MILLISECOND, 0);
}

} // namespace

Calendar::Calendar() = default;
Calendar::~Calendar() = default;
Calendar::Calendar(Calendar&&) noexcept = default;
Calendar& Calendar::operator=(Calendar&&) noexcept = default;

Calendar Calendar::autoupdatingCurrent() {
    Calendar calendar;
    calendar.system_.emplace();
    return calendar;
}

Calendar::Calendar(std::string_view zone)
    : working_(makeWorking(icu::TimeZone::createTimeZone(
          icu::UnicodeString::fromUTF8({zone.data(), static_cast<std::int32_t>(zone.size())})))) {}

Calendar::Calendar(const Calendar& other) : system_(other.system_) {
    if (other.working_) {
        working_.reset(other.working_->clone());
    }
}

Calendar& Calendar::operator=(const Calendar& other) {
    return *this = Calendar(other);
}

Calendar Calendar::snapshot() const {
    Calendar calendar;
    calendar.working_.reset(current().clone());
    return calendar;
}

icu::GregorianCalendar& Calendar::current() const {
    if (system_) {
        if (auto zone = system_->changedZone()) {
            working_ = makeWorking(zone.release());
        }
    }
    return *working_;
}

icu::GregorianCalendar& Calendar::at(Instant instant) const {
    auto& calendar = current();
    UErrorCode status = U_ZERO_ERROR;
    calendar.setTime(udate(instant), status);
    return calendar;
}

Calendar::Components Calendar::components(Instant instant) const {
    auto& calendar = at(instant);
    return {.year = field(calendar, UCAL_EXTENDED_YEAR),
            .month = field(calendar, UCAL_MONTH) + 1,
            .day = field(calendar, UCAL_DATE),
            .hour = field(calendar, UCAL_HOUR_OF_DAY),
            .minute = field(calendar, UCAL_MINUTE),
            .second = field(calendar, UCAL_SECOND)};
}

int Calendar::hour(Instant instant) const {
    return field(at(instant), UCAL_HOUR_OF_DAY);
}

Instant Calendar::startOfDay(Instant instant) const {
    auto& calendar = at(instant);
    setTimeOfDay(calendar, 0, 0, 0);
    return time(calendar).value_or(instant);
}

std::optional<Instant> Calendar::date(const Components& components) const {
    auto& calendar = current();
    calendar.clear();
    calendar.set(UCAL_EXTENDED_YEAR, components.year);
    calendar.set(UCAL_MONTH, components.month - 1);
    calendar.set(UCAL_DATE, components.day);
    setTimeOfDay(calendar, components.hour, components.minute, components.second);
    return time(calendar);
}

std::optional<Instant> Calendar::addingDays(Instant instant, int days) const {
    auto& calendar = at(instant);
    UErrorCode status = U_ZERO_ERROR;
    calendar.add(UCAL_DATE, days, status);
    return U_SUCCESS(status) ? time(calendar) : std::nullopt;
}

int Calendar::wholeDays(Instant from, Instant to) const {
    auto& calendar = at(from);
    UErrorCode status = U_ZERO_ERROR;
    return calendar.fieldDifference(udate(to), UCAL_DATE, status);
}

std::optional<Instant> Calendar::noon(Instant instant) const {
    auto& calendar = at(instant);
    setTimeOfDay(calendar, 12, 0, 0);
    return time(calendar);
}

} // namespace fernhollow
