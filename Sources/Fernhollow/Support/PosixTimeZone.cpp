#include "Support/PosixTimeZone.h"

#include <unicode/dtrule.h>
#include <unicode/rbtz.h>
#include <unicode/simpletz.h>
#include <unicode/tzrule.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

namespace fernhollow {
namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_seconds;
using std::chrono::year;

constexpr int firstYear = 1990;
constexpr int lastYear = 2099;

// What the C library assumes when a zone has summer time but no rule for it.
constexpr std::string_view usualChanges = ",M3.2.0,M11.1.0";

/// A day of every year and a time of that day, by the clock as it runs before the change.
struct YearlyChange {
    enum class Kind { weekdayOfMonth, dayWithoutLeapDay, dayFromZero };

    Kind kind = Kind::dayFromZero;
    unsigned month = 1;
    unsigned week = 1; ///< 5 is the last
    unsigned weekday = 0;
    int day = 0;
    seconds time = hours(2);

    sys_seconds in(year y) const {
        using namespace std::chrono;
        const sys_days newYear = y / January / 1;
        switch (kind) {
        case Kind::weekdayOfMonth: {
            const auto monthOfYear = y / std::chrono::month(month);
            return time + (week == 5 ? sys_days(monthOfYear / std::chrono::weekday(weekday)[last])
                                     : sys_days(monthOfYear / std::chrono::weekday(weekday)[week]));
        }
        case Kind::dayWithoutLeapDay:
            return newYear + days(day - 1 + (day >= 60 && y.is_leap() ? 1 : 0)) + time;
        case Kind::dayFromZero:
            break;
        }
        return newYear + days(day) + time;
    }
};

/// Offsets are positive east of Greenwich, as in ICU; in POSIX they are positive to the west.
struct Rule {
    seconds standard{0};
    std::optional<seconds> summer{};
    YearlyChange toSummer{};
    YearlyChange toStandard{};
};

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Reads a rule from its front. Each step returns false, or nothing, when the text does not match.
class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    std::optional<Rule> rule() {
        Rule rule;
        const auto standard = name() ? offset() : std::nullopt;
        if (!standard) {
            return std::nullopt;
        }
        rule.standard = *standard;
        if (text_.empty()) {
            return rule;
        }
        if (!name()) {
            return std::nullopt;
        }
        rule.summer = offset().value_or(rule.standard + hours(1));
        if (text_.empty() || text_ == ",") {
            text_ = usualChanges;
        }
        const bool isWhole = change(rule.toSummer) && change(rule.toStandard) && text_.empty();
        return isWhole ? std::optional(rule) : std::nullopt;
    }

private:
    bool skip(char c) {
        const bool found = text_.starts_with(c);
        text_.remove_prefix(found ? 1 : 0);
        return found;
    }

    bool name() {
        const bool isQuoted = skip('<');
        const auto end = std::ranges::find_if_not(text_, [isQuoted](char c) {
            return isLetter(c) || (isQuoted && (isDigit(c) || c == '+' || c == '-'));
        });
        const auto length = static_cast<std::size_t>(end - text_.begin());
        text_.remove_prefix(length);
        return length >= 3 && (!isQuoted || skip('>'));
    }

    template<class Number>
    bool number(Number& value, Number least, Number most) {
        const auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), value);
        text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
        return error == std::errc() && value >= least && value <= most;
    }

    /// A sign, hours, and perhaps minutes and seconds.
    std::optional<seconds> time() {
        const bool isNegative = skip('-');
        if (!isNegative) {
            skip('+');
        }
        constexpr unsigned mostHours = 167; // a week: a change may come days after its rule's day
        unsigned hour = 0;
        unsigned minute = 0;
        unsigned second = 0;
        if (!number(hour, 0U, mostHours) || (skip(':') && !number(minute, 0U, 59U)) ||
            (skip(':') && !number(second, 0U, 59U))) {
            return std::nullopt;
        }
        const seconds sum = hours(hour) + minutes(minute) + seconds(second);
        return isNegative ? -sum : sum;
    }

    std::optional<seconds> offset() {
        if (text_.empty() || (!isDigit(text_.front()) && text_.front() != '+' && text_.front() != '-')) {
            return std::nullopt;
        }
        const auto west = time();
        return west ? std::optional(-*west) : std::nullopt;
    }

    bool change(YearlyChange& change) {
        if (!skip(',') || !day(change)) {
            return false;
        }
        if (skip('/')) {
            const auto at = time();
            change.time = at.value_or(change.time);
            return at.has_value();
        }
        return true;
    }

    bool day(YearlyChange& change) {
        if (skip('M')) {
            change.kind = YearlyChange::Kind::weekdayOfMonth;
            return number(change.month, 1U, 12U) && skip('.') && number(change.week, 1U, 5U) && skip('.') &&
                   number(change.weekday, 0U, 6U);
        }
        const bool isWithoutLeapDay = skip('J');
        change.kind =
            isWithoutLeapDay ? YearlyChange::Kind::dayWithoutLeapDay : YearlyChange::Kind::dayFromZero;
        return number(change.day, isWithoutLeapDay ? 1 : 0, 365);
    }

    std::string_view text_;
};

struct Change {
    sys_seconds at;
    bool isToSummer;
};

/// The changes in the order of time. Pairs that cancel each other at once, as in a summer time of the whole
/// year, are left out.
std::vector<Change> changes(const Rule& rule) {
    std::vector<Change> all;
    for (int number = firstYear; number <= lastYear; ++number) {
        all.push_back({rule.toSummer.in(year(number))-rule.standard, true});
        all.push_back({rule.toStandard.in(year(number)) - *rule.summer, false});
    }
    std::ranges::sort(all, {}, &Change::at);
    std::vector<Change> kept;
    for (const Change& change : all) {
        if (!kept.empty() && kept.back().at == change.at) {
            kept.pop_back();
        } else {
            kept.push_back(change);
        }
    }
    return kept;
}

std::int32_t milliseconds(seconds duration) {
    return static_cast<std::int32_t>(std::chrono::milliseconds(duration).count());
}

std::unique_ptr<icu::TimeZone> makeZone(const Rule& rule, const icu::UnicodeString& name) {
    const std::int32_t standard = milliseconds(rule.standard);
    if (!rule.summer) {
        return std::make_unique<icu::SimpleTimeZone>(standard, name);
    }
    auto zone =
        std::make_unique<icu::RuleBasedTimeZone>(name, new icu::InitialTimeZoneRule(name, standard, 0));
    std::vector<UDate> toSummer;
    std::vector<UDate> toStandard;
    for (const Change& change : changes(rule)) {
        (change.isToSummer ? toSummer : toStandard)
            .push_back(static_cast<UDate>(std::chrono::milliseconds(change.at.time_since_epoch()).count()));
    }
    UErrorCode status = U_ZERO_ERROR;
    const auto add = [&](const std::vector<UDate>& times, std::int32_t savings) {
        if (!times.empty()) {
            zone->addTransitionRule(new icu::TimeArrayTimeZoneRule(name, standard, savings, times.data(),
                                                                   static_cast<std::int32_t>(times.size()),
                                                                   icu::DateTimeRule::UTC_TIME),
                                    status);
        }
    };
    add(toSummer, milliseconds(*rule.summer - rule.standard));
    add(toStandard, 0);
    zone->complete(status);
    return U_SUCCESS(status) ? std::move(zone) : nullptr;
}

} // namespace

std::unique_ptr<icu::TimeZone> makePosixTimeZone(std::string_view rule) {
    const auto parsed = Parser(rule).rule();
    if (!parsed) {
        return nullptr;
    }
    return makeZone(*parsed,
                    icu::UnicodeString::fromUTF8({rule.data(), static_cast<std::int32_t>(rule.size())}));
}

} // namespace fernhollow
