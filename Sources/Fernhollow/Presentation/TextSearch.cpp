#include "Presentation/TextSearch.h"

#include <unicode/locid.h>
#include <unicode/normalizer2.h>

namespace fernhollow {
namespace {

std::uint32_t foldingOf(std::string_view locale) {
    const icu::Locale parsed(std::string(locale).c_str());
    const std::string_view language = parsed.getLanguage();
    const bool hasDotlessI = language == "tr" || language == "az";
    return hasDotlessI ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT;
}

} // namespace

TextSearch::TextSearch(std::string_view locale) : folding_(foldingOf(locale)) {}

bool TextSearch::isIn(std::string_view name) const {
    return text_.isEmpty() || folded(name).indexOf(text_) >= 0;
}

// Composed (NFC), so that a letter is not found inside the same letter with an accent.
icu::UnicodeString TextSearch::folded(std::string_view text) const {
    auto result = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())})
                      .foldCase(folding_);
    UErrorCode status = U_ZERO_ERROR;
    const auto* composer = icu::Normalizer2::getNFCInstance(status);
    if (U_SUCCESS(status) && !composer->isNormalized(result, status)) {
        const auto composed = composer->normalize(result, status);
        return U_SUCCESS(status) ? composed : result;
    }
    return result;
}

} // namespace fernhollow
