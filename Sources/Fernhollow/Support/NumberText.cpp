#include "Support/NumberText.h"

#include <unicode/numberformatter.h>

namespace fernhollow {

struct NumberText::Formatter {
    icu::number::LocalizedNumberFormatter whole;
};

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
