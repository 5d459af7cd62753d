#include "Presentation/DayText.h"

#include "KeypressCore/DayKey.h"
#include "Support/RelativeTime.h"
#include "Support/SystemTimeZone.h"

#include <unicode/smpdtfmt.h>

#include <array>
#include <chrono>

namespace fernhollow {
namespace {

enum Form { full, medium, dayAndMonthForm, forms };

std::unique_ptr<icu::DateFormat> make(Form form, const icu::Locale& locale) {
    if (form == dayAndMonthForm) {
        UErrorCode status = U_ZERO_ERROR;
        auto pattern = std::make_unique<icu::SimpleDateFormat>(u"dd/MM", locale, status);
        return U_SUCCESS(status) ? std::move(pattern) : nullptr;
    }
    const auto style = form == full ? icu::DateFormat::kFull : icu::DateFormat::kMedium;
    return std::unique_ptr<icu::DateFormat>(icu::DateFormat::createDateInstance(style, locale));
}

UDate udate(Instant instant) {
    return std::chrono::duration<double, std::milli>(instant.time_since_epoch()).count();
}

/// The day's midnight in UTC, where all days have the same length.
Instant inUtc(Instant instant, const Calendar& calendar) {
    using namespace std::chrono;
    const auto [year, month, day, hour, minute, second] = calendar.components(instant);
    return sys_days(std::chrono::year(year) / month / day);
}

} // namespace

/// Created when first needed, because they are expensive to create and to keep.
struct DayText::Formatters {
    Formatters(std::string_view words, std::string_view digits)
        : locale(std::string(words).c_str()), digits(std::string(digits).c_str()),
          relative(words, RelativeTime::Units::full) {}

    icu::DateFormat* get(Form form) {
        if (auto changed = system.changedZone()) {
            zone = std::move(changed);
            for (const auto& format : formats) {
                if (format) {
                    format->setTimeZone(*zone);
                }
            }
        }
        auto& format = formats[form];
        if (!format) {
            format = make(form, form == dayAndMonthForm ? digits : locale);
            if (format) {
                format->setTimeZone(*zone);
            }
        }
        return format.get();
    }

    std::string text(Form form, Instant day, const Calendar& calendar) {
        const icu::DateFormat* format = get(form);
        if (format == nullptr) {
            return DayKey(day, calendar).rawValue; // without a formatter, at least the right day
        }
        icu::UnicodeString text;
        std::string result;
        return format->format(udate(day), text).toUTF8String(result);
    }

    icu::Locale locale;
    icu::Locale digits;
    RelativeTime relative;
    SystemTimeZone system;
    std::unique_ptr<icu::TimeZone> zone;
    std::array<std::unique_ptr<icu::DateFormat>, forms> formats;
};

DayText::DayText()
    : formatters_(std::make_unique<Formatters>(englishLocale("LC_TIME"), userLocale("LC_TIME"))) {}

DayText::DayText(std::string_view locale) : formatters_(std::make_unique<Formatters>(locale, locale)) {}

DayText::~DayText() = default;

std::string DayText::fullDate(Instant day) const {
    return formatters_->text(full, day, calendar_);
}

std::string DayText::mediumDate(Instant day) const {
    return formatters_->text(medium, day, calendar_);
}

std::string DayText::dayAndMonth(Instant day) const {
    return formatters_->text(dayAndMonthForm, day, calendar_);
}

std::string DayText::fromNow(Instant day, Instant now) const {
    return formatters_->relative(inUtc(day, calendar_), inUtc(now, calendar_));
}

} // namespace fernhollow
