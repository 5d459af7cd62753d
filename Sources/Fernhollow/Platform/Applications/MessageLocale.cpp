#include "Platform/Applications/MessageLocale.h"

#include "Support/UserLocale.h"

namespace fernhollow {

std::string messageLocale() {
    return localeSetting("LC_MESSAGES");
}

// A locale is lang_COUNTRY.ENCODING@MODIFIER; only the language is always present.
std::vector<std::string> localeCandidates(std::string_view locale) {
    const auto at = locale.find('@');
    const std::string modifier(at == std::string_view::npos ? "" : locale.substr(at));
    locale = locale.substr(0, at);
    locale = locale.substr(0, locale.find('.'));
    const std::string languageAndCountry(locale);
    const std::string language(locale.substr(0, locale.find('_')));
    if (language.empty() || language == "C" || language == "POSIX") {
        return {};
    }

    std::vector<std::string> candidates;
    const bool hasCountry = language != languageAndCountry;
    if (hasCountry && !modifier.empty()) {
        candidates.push_back(languageAndCountry + modifier);
    }
    if (hasCountry) {
        candidates.push_back(languageAndCountry);
    }
    if (!modifier.empty()) {
        candidates.push_back(language + modifier);
    }
    candidates.push_back(language);
    return candidates;
}

} // namespace fernhollow
