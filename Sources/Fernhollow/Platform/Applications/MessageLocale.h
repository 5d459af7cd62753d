#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace fernhollow {

/// The locale of messages, for example "pt_BR.UTF-8": the first of LC_ALL, LC_MESSAGES and LANG that is set.
std::string messageLocale();

/// The locales under which a desktop entry may hold a text for `locale`, best first, as the Desktop
/// Entry Specification orders them; none for "C" and "POSIX".
std::vector<std::string> localeCandidates(std::string_view locale);

} // namespace fernhollow
