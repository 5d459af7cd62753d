#include "Support/NumberText.h"
#include "Support/Testing.h"
#include "Support/Text.h"

#include <cstdint>

namespace fernhollow::tests {
namespace {

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

} // namespace
} // namespace fernhollow::tests
