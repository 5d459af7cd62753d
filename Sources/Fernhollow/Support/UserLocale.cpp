#include "Support/UserLocale.h"

#include <cstdlib>
#include <string_view>

namespace fernhollow {

std::string userLocale(const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0') {
            continue;
        }
        std::string_view locale = value;
        locale = locale.substr(0, locale.find_first_of(".@"));
        return locale == "C" || locale == "POSIX" ? "en" : std::string(locale);
    }
    return "en";
}

} // namespace fernhollow
