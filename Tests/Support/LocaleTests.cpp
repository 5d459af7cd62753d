#include "Support/InternetTime.h"
#include "Support/Localization.h"
#include "Support/NumberText.h"
#include "Support/RelativeTime.h"
#include "Support/Testing.h"
#include "Support/Text.h"

#include <cstdint>
#include <vector>

namespace fernhollow::tests {
namespace {

struct RelativeCase {
    const char* locale;
    const char* then;
    const char* text;
    const char* now = "2026-03-31T12:00:00Z";
};

TEST(RelativeTimes, NameTheLargestUnitThatPassed) {
    for (const auto& [locale, thenText, text, nowText] :
         std::vector<RelativeCase>{{"en_US", "2026-03-31T11:59:01Z", "59 sec. ago"},
                                   {"en_US", "2026-03-31T11:00:01Z", "59 min. ago"},
                                   {"en_US", "2026-03-31T11:00:00Z", "1 hr. ago"},
                                   {"en_US", "2026-03-01T12:00:00Z", "4 wk. ago"},
                                   {"en_US", "2026-01-31T12:00:00Z", "1 mo. ago", "2026-02-28T12:00:00Z"},
                                   {"en_US", "2024-02-29T12:00:00Z", "1 yr. ago", "2025-02-28T12:00:00Z"},
                                   {"en_US", "1700-01-01T00:00:00Z", "560 yr. ago", "2260-01-01T00:00:00Z"},
                                   {"en_US", "2026-03-31T12:00:02Z", "in 2 sec."},
                                   {"pt_BR", "2026-03-28T12:00:00Z", "há 3 dias"},
                                   {"ar_EG", "2026-03-29T12:00:00Z", "قبل يومين"},
                                   {"not a locale", "2026-03-28T12:00:00Z", "3 days ago"}}) {
        const auto then = parseInternetTime(thenText);
        const auto now = parseInternetTime(nowText);
        ASSERT_TRUE(then && now);
        EXPECT_EQ(RelativeTime(locale)(*then, *now), text) << thenText << " in " << locale;
    }
}

TEST(Numbers, AreGroupedAsTheLocaleDoes) {
    struct Case {
        const char* locale;
        std::int64_t number;
        const char* text;
    };
    const EnvironmentGuard all("LC_ALL", std::nullopt);
    const EnvironmentGuard language("LANG", "en_US.UTF-8");
    for (const auto& [locale, number, text] :
         {Case{"en_US.UTF-8", 12'345, "12,345"}, Case{"C.UTF-8", 12'345, "12,345"},
          Case{"de_DE@euro", 1'234'567, "1.234.567"}, Case{"es_ES.UTF-8", 1'234, "1234"},
          Case{"en_IN.UTF-8", 1'234'567, "12,34,567"}, Case{"ar_EG.UTF-8", 12'345, "١٢٬٣٤٥"},
          Case{"not a locale", 12'345, "12,345"}, Case{"", 0, "0"},
          Case{"en_US", 9'223'372'036'854'775'807, "9,223,372,036,854,775,807"}}) {
        const EnvironmentGuard numbers("LC_NUMERIC", locale);
        EXPECT_EQ(NumberText()(number), text) << locale;
    }
}

TEST(Addresses, AreTrimmedAndLoweredByUnicode) {
    EXPECT_EQ(trimmed(" \t\u2003ana b@x\u00a0\r\n"), "ana b@x");
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(lowercased("ÄNA.İ@X"), "äna.i̇@x");
}

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
