#include "Support/RelativeTime.h"

#include <unicode/reldatefmt.h>
#include <unicode/ures.h>

#include <chrono>
#include <cstdint>

namespace fernhollow {
namespace {

using namespace std::chrono;

struct Span {
    std::int64_t count;
    URelativeDateTimeUnit unit;
};

// One month after the 31st is the last day of a shorter month.
sys_seconds addingMonths(sys_seconds instant, months count) {
    const auto day = floor<days>(instant);
    auto date = year_month_day(day) + count;
    if (!date.ok()) {
        date = date.year() / date.month() / last;
    }
    return sys_days(date) + (instant - day);
}

months wholeMonths(sys_seconds from, sys_seconds to) {
    const year_month_day first(floor<days>(from));
    const year_month_day second(floor<days>(to));
    const auto count = second.year() / second.month() - first.year() / first.month();
    return addingMonths(from, count) > to ? count - months(1) : count;
}

Span largestUnit(sys_seconds from, sys_seconds to) {
    if (const auto passed = wholeMonths(from, to); passed >= months(12)) {
        return {passed / years(1), UDAT_REL_UNIT_YEAR};
    } else if (passed > months(0)) {
        return {passed.count(), UDAT_REL_UNIT_MONTH};
    }
    const seconds passed = to - from;
    if (passed >= weeks(1)) {
        return {passed / weeks(1), UDAT_REL_UNIT_WEEK};
    }
    if (passed >= days(1)) {
        return {passed / days(1), UDAT_REL_UNIT_DAY};
    }
    if (passed >= hours(1)) {
        return {passed / hours(1), UDAT_REL_UNIT_HOUR};
    }
    if (passed >= minutes(1)) {
        return {passed / minutes(1), UDAT_REL_UNIT_MINUTE};
    }
    return {passed.count(), UDAT_REL_UNIT_SECOND};
}

/// `locale`, or English when ICU has no words for its language and would say "-3 d".
icu::Locale spoken(const std::string& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUResourceBundlePointer words(ures_open(nullptr, locale.c_str(), &status));
    const bool isKnown = U_SUCCESS(status) && status != U_USING_DEFAULT_WARNING;
    return isKnown ? icu::Locale(locale.c_str()) : icu::Locale::getEnglish();
}

} // namespace

struct RelativeTime::Formatter {
    UErrorCode status = U_ZERO_ERROR;
    icu::RelativeDateTimeFormatter words;

    Formatter(const icu::Locale& locale, UDateRelativeDateTimeFormatterStyle style)
        : words(locale, nullptr, style, UDISPCTX_CAPITALIZATION_NONE, status) {}
};

RelativeTime::RelativeTime(std::string_view locale, Units units)
    : formatter_(std::make_unique<Formatter>(spoken(std::string(locale)),
                                             units == Units::full ? UDAT_STYLE_LONG : UDAT_STYLE_SHORT)) {}

RelativeTime::~RelativeTime() = default;

std::string RelativeTime::operator()(Instant then, Instant now) const {
    // In whole seconds, because the difference of two distant instants would overflow in finer units.
    const auto from = floor<seconds>(then);
    const auto to = floor<seconds>(now);
    const bool isPast = from <= to;
    const Span span = isPast ? largestUnit(from, to) : largestUnit(to, from);

    // ICU reads minus zero as a moment ago and zero as a moment ahead.
    const double offset = static_cast<double>(span.count) * (isPast ? -1.0 : 1.0);
    UErrorCode status = formatter_->status;
    icu::UnicodeString text;
    formatter_->words.formatNumeric(offset, span.unit, text, status);
    std::string result;
    return text.toUTF8String(result);
}

} // namespace fernhollow
