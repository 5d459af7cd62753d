#include "Support/NumberText.h"

#include <unicode/compactdecimalformat.h>
#include <unicode/numberformatter.h>

#include <cstdlib>

namespace fernhollow {
namespace {

using icu::number::LocalizedNumberFormatter;

std::string formatted(const LocalizedNumberFormatter& formatter, std::int64_t number) {
    UErrorCode status = U_ZERO_ERROR;
    const auto text = formatter.formatInt(number, status).toString(status);
    if (U_FAILURE(status)) {
        return std::to_string(number); // plain digits are still the right number
    }
    std::string result;
    return text.toUTF8String(result);
}

} // namespace

struct NumberText::Formatters {
    LocalizedNumberFormatter whole;
    LocalizedNumberFormatter compact;
};

std::string userNumberLocale() {
    for (const char* variable : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0') {
            continue;
        }
        std::string_view locale = value;
        locale = locale.substr(0, locale.find_first_of(".@"));
        return locale == "C" || locale == "POSIX" ? "en" : std::string(locale);
    }
    return "en";
}

NumberText::NumberText(std::string_view locale) {
    const icu::Locale icuLocale(std::string(locale).c_str());
    const auto base = icu::number::NumberFormatter::withLocale(icuLocale);
    formatters_ = std::make_unique<Formatters>(
        Formatters{base.grouping(UNUM_GROUPING_AUTO), base.notation(icu::number::Notation::compactShort())
                                                          .precision(icu::number::Precision::integer())
                                                          .roundingMode(UNUM_ROUND_DOWN)});
}

NumberText::~NumberText() = default;

std::string NumberText::operator()(std::int64_t number) const {
    return formatted(formatters_->whole, number);
}

std::string NumberText::compact(std::int64_t number) const {
    return formatted(formatters_->compact, number);
}

} // namespace fernhollow
