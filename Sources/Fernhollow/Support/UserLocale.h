#pragma once

#include <string>

namespace fernhollow {

/// The locale that is set for a category such as LC_NUMERIC or LC_TIME, for example "pt_BR.UTF-8": the first
/// of LC_ALL, the category's own variable and LANG that is not empty.
std::string localeSetting(const char* category);

/// The same locale as an identifier for ICU. "C" and "POSIX", which have no language and do not group digits,
/// become "en".
std::string userLocale(const char* category);

/// That locale for words and dates that stand among English texts: English as it is written outside the
/// United States, with the calendar of the user's region, unless the locale is English itself.
std::string englishLocale(const char* category);

/// The language that the user prefers, as a locale such as "pt_BR": the first entry of LANGUAGE, else the
/// locale of messages. As in GNU gettext, LANGUAGE counts only when that locale is not "C".
std::string preferredLanguage();

} // namespace fernhollow
