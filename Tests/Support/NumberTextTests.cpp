#include "Support/NumberText.h"
#include "Support/TemporaryHome.h"
#include "Support/Text.h"

#include <gmock/gmock.h>

#include <cstdint>

namespace fernhollow {
namespace {

using tests::EnvironmentGuard;

struct NumberCase {
    const char* locale;
    std::int64_t number;
    const char* text;
};

class NumbersInALocale : public testing::TestWithParam<NumberCase> {};

TEST_P(NumbersInALocale, AreGroupedAsItsPeopleDo) {
    const EnvironmentGuard all("LC_ALL", std::nullopt);
    const EnvironmentGuard language("LANG", "en_US.UTF-8");
    const EnvironmentGuard numbers("LC_NUMERIC", GetParam().locale);
    EXPECT_EQ(NumberText()(GetParam().number), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Locales, NumbersInALocale,
    testing::Values(NumberCase{"en_US.UTF-8", 12'345, "12,345"}, NumberCase{"C.UTF-8", 12'345, "12,345"},
                    NumberCase{"de_DE@euro", 1'234'567, "1.234.567"},
                    NumberCase{"pt_BR.UTF-8", 12'345, "12.345"}, NumberCase{"es_ES.UTF-8", 1'234, "1234"},
                    NumberCase{"en_IN.UTF-8", 1'234'567, "12,34,567"},
                    NumberCase{"ar_EG.UTF-8", 12'345, "١٢٬٣٤٥"}, NumberCase{"not a locale", 12'345, "12,345"},
                    NumberCase{"", 0, "0"},
                    NumberCase{"en_US", 9'223'372'036'854'775'807, "9,223,372,036,854,775,807"}));

TEST(Addresses, AreTrimmedAndLoweredByUnicode) {
    EXPECT_EQ(trimmed(" \t\u2003ana b@x\u00a0\r\n"), "ana b@x");
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(lowercased("ÄNA.İ@X"), "äna.i̇@x");
}

} // namespace
} // namespace fernhollow
