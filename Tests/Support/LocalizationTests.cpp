#include "Support/Localization.h"
#include "TemporaryHome.h"

#include <gmock/gmock.h>

namespace fernhollow::tests {
namespace {

struct Preference {
    const char* all;
    const char* messages;
    const char* lang;
    const char* languages;
    AppLanguage expected;
};

void PrintTo(const Preference& preference, std::ostream* out) {
    const auto& [all, messages, lang, languages, expected] = preference;
    *out << "LC_ALL=" << all << " LC_MESSAGES=" << messages << " LANG=" << lang << " LANGUAGE=" << languages;
}

class Language : public testing::TestWithParam<Preference> {};

TEST_P(Language, IsTheOneThatThePersonPrefers) {
    const auto& [all, messages, lang, languages, expected] = GetParam();
    const EnvironmentGuard guards[] = {
        {"LC_ALL", all}, {"LC_MESSAGES", messages}, {"LANG", lang}, {"LANGUAGE", languages}};
    EXPECT_EQ(currentAppLanguage(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Preferences, Language,
    testing::Values(Preference{"", "", "", "", AppLanguage::english},
                    Preference{"", "", "pt_BR.UTF-8", "", AppLanguage::portuguese},
                    Preference{"", "", "pt_PT@euro", "", AppLanguage::portuguese},
                    Preference{"", "en_PT.UTF-8", "pt_BR.UTF-8", "", AppLanguage::english},
                    Preference{"pt_BR.UTF-8", "de_DE.UTF-8", "en_US.UTF-8", "", AppLanguage::portuguese},
                    Preference{"", "", "en_US.UTF-8", "pt:en", AppLanguage::portuguese},
                    Preference{"", "", "en_US.UTF-8", ":pt_PT:en", AppLanguage::portuguese},
                    Preference{"", "", "pt_BR.UTF-8", "en_US:pt_BR", AppLanguage::english},
                    Preference{"C.UTF-8", "", "pt_BR.UTF-8", "pt_BR", AppLanguage::english}));

} // namespace
} // namespace fernhollow::tests
