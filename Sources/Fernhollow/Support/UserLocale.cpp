#include "Support/UserLocale.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string_view>

namespace fernhollow {
namespace {

/// The locale set for the category; empty when it has no language.
std::string spokenLocale(const char* category) {
    std::string locale = localeSetting(category);
    locale.resize(std::min(locale.find_first_of(".@"), locale.size()));
    return locale == "C" || locale == "POSIX" ? "" : locale;
}

} // namespace

std::string localeSetting(const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        if (const char* value = std::getenv(variable); value != nullptr && *value != '\0') {
            return value;
        }
    }
    return {};
}

std::string userLocale(const char* category) {
    const std::string locale = spokenLocale(category);
    return locale.empty() ? "en" : locale;
}

std::string englishLocale(const char* category) {
    std::string locale = userLocale(category);
    if (locale.starts_with("en")) {
        return locale;
    }
    const auto separator = locale.find('_');
    std::string region = separator == std::string::npos ? "" : locale.substr(separator + 1);
    std::ranges::transform(region, region.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return region.size() == 2 ? "en_001@rg=" + region + "zzzz" : "en_001";
}

std::string preferredLanguage() {
    const std::string locale = spokenLocale("LC_MESSAGES");
    if (locale.empty()) {
        return "en";
    }
    const char* languages = std::getenv("LANGUAGE");
    std::string_view list = languages != nullptr ? languages : "";
    list.remove_prefix(std::min(list.find_first_not_of(':'), list.size())); // gettext skips empty entries
    return list.empty() ? locale : std::string(list.substr(0, list.find(':')));
}

} // namespace fernhollow
