#pragma once

#include <string>
#include <string_view>

namespace fernhollow {

/// `text` (UTF-8) without white space and line breaks, as Unicode defines them, at both ends.
std::string trimmed(std::string_view text);

/// `text` (UTF-8) in lower case, by Unicode's rules that hold for every language.
std::string lowercased(std::string_view text);

} // namespace fernhollow
