#pragma once

#include "Support/UserLocale.h"

#include <unicode/unistr.h>

#include <cstdint>
#include <string_view>

namespace fernhollow {

/// Looks for a text in names. It ignores case by the locale's rules: in Turkish "I" is not "i".
/// Accents make a difference. An empty text is in every name.
class TextSearch {
public:
    explicit TextSearch(std::string_view locale = userLocale("LC_CTYPE"));

    /// The text to look for, in UTF-8.
    void setText(std::string_view text) { text_ = folded(text); }
    /// True when `name` contains the text.
    bool isIn(std::string_view name) const;

private:
    icu::UnicodeString folded(std::string_view text) const;

    std::uint32_t folding_;
    icu::UnicodeString text_;
};

} // namespace fernhollow
