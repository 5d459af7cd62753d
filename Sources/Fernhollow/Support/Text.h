#pragma once

#include <string>
#include <string_view>

namespace fernhollow {

/// `text` (UTF-8) without white space and line breaks at both ends, in the Unicode sense.
std::string trimmed(std::string_view text);

/// `text` (UTF-8) in lower case by the Unicode rules that depend on no language.
std::string lowercased(std::string_view text);

} // namespace fernhollow
