#include "Support/NumberText.h"

#include <unicode/numberformatter.h>

#include <cstdlib>

namespace fernhollow {

struct NumberText::Formatter {
    icu::number::LocalizedNumberFormatter whole;
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

NumberText::NumberText(std::string_view locale)
    : formatter_(std::make_unique<Formatter>(
          Formatter{icu::number::NumberFormatter::withLocale(icu::Locale(std::string(locale).c_str()))
                        .grouping(UNUM_GROUPING_AUTO)})) {}

NumberText::~NumberText() = default;

std::string NumberText::operator()(std::int64_t number) const {
    UErrorCode status = U_ZERO_ERROR;
    const auto text = formatter_->whole.formatInt(number, status).toString(status);
    if (U_FAILURE(status)) {
        return std::to_string(number); // plain digits are still the right number
    }
    std::string result;
    return text.toUTF8String(result);
}

} // namespace fernhollow
