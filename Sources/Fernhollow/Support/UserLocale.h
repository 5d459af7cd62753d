#pragma once

#include <string>

namespace fernhollow {

/// The locale that is set for a category such as LC_NUMERIC or LC_TIME, for example "pt_BR.UTF-8": the first
/// of LC_ALL, the category's own variable and LANG that is not empty.
std::string localeSetting(const char* category);

/// That locale as an identifier that ICU reads. "C" and "POSIX", which speak no language and group no digits,
/// stand for "en".
std::string userLocale(const char* category);

/// The language that the user prefers, as a locale such as "pt_BR": the first of LANGUAGE, which GNU gettext
/// puts before the locale of messages unless that is "C", else that locale.
std::string preferredLanguage();

} // namespace fernhollow
