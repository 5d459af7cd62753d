#include "Support/UserLocale.h"

#include <cstdlib>
#include <string_view>

namespace fernhollow {
namespace {

/// Empty for the locales without a language.
std::string spokenLocale(const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0') {
            continue;
        }
        std::string_view locale = value;
        locale = locale.substr(0, locale.find_first_of(".@"));
        return locale == "C" || locale == "POSIX" ? "" : std::string(locale);
    }
    return {};
}

} // namespace

std::string userLocale(const char* category) {
    const std::string locale = spokenLocale(category);
    return locale.empty() ? "en" : locale;
}

std::string preferredLanguage() {
    const std::string locale = spokenLocale("LC_MESSAGES");
    const char* languages = std::getenv("LANGUAGE");
    if (locale.empty() || languages == nullptr || *languages == '\0') {
        return locale.empty() ? "en" : locale;
    }
    const std::string_view list = languages;
    const std::string_view first = list.substr(0, list.find(':'));
    return first.empty() ? locale : std::string(first);
}

} // namespace fernhollow
