#include "Support/Text.h"

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cstdint>

namespace fernhollow {
namespace {

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    return text.toUTF8String(result);
}

} // namespace

std::string trimmed(std::string_view text) {
    const auto unicode = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    std::int32_t begin = 0;
    std::int32_t end = unicode.length();
    while (begin < end && u_isUWhiteSpace(unicode.char32At(begin))) {
        begin = unicode.moveIndex32(begin, 1);
    }
    while (end > begin && u_isUWhiteSpace(unicode.char32At(end - 1))) {
        end = unicode.moveIndex32(end, -1);
    }
    return utf8(unicode.tempSubStringBetween(begin, end));
}

std::string lowercased(std::string_view text) {
    auto unicode = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    return utf8(unicode.toLower(icu::Locale::getRoot()));
}

} // namespace fernhollow
