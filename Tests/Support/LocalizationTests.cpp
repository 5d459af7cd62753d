#include "Support/Localization.h"
#include "Support/Testing.h"

namespace fernhollow::tests {
namespace {

TEST(Language, IsTheOneThatThePersonPrefers) {
    struct Preference {
        const char *all, *messages, *lang, *languages;
        AppLanguage expected;
    };
    constexpr auto english = AppLanguage::english;
    constexpr auto portuguese = AppLanguage::portuguese;
    for (const auto& [all, messages, lang, languages, expected] :
         {Preference{"", "", "", "", english}, Preference{"", "", "pt_BR.UTF-8", "", portuguese},
          Preference{"", "", "pt_PT@euro", "", portuguese},
          Preference{"", "en_PT.UTF-8", "pt_BR.UTF-8", "", english},
          Preference{"pt_BR.UTF-8", "de_DE.UTF-8", "en_US.UTF-8", "", portuguese},
          Preference{"", "", "en_US.UTF-8", ":pt_PT:en", portuguese},
          Preference{"", "", "pt_BR.UTF-8", "en_US:pt_BR", english},
          Preference{"C.UTF-8", "", "pt_BR.UTF-8", "pt_BR", english}}) {
        const EnvironmentGuard guards[] = {
            {"LC_ALL", all}, {"LC_MESSAGES", messages}, {"LANG", lang}, {"LANGUAGE", languages}};
        EXPECT_EQ(currentAppLanguage(), expected) << "LC_ALL=" << all << " LC_MESSAGES=" << messages
                                                  << " LANG=" << lang << " LANGUAGE=" << languages;
    }
}

} // namespace
} // namespace fernhollow::tests
