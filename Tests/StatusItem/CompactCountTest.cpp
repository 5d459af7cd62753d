#include "Platform/StatusItem/CompactCount.h"

#include <gmock/gmock.h>

namespace fernhollow::tests {

TEST(CompactCount, FitsAnIconInEveryLocale) {
    const std::vector<std::pair<QString, QString>> shortenings{
        {u"0"_qs, u"0"_qs},
        {u"999"_qs, u"999"_qs},
        {u"1,000"_qs, u"1.0k"_qs},
        {u"9,999"_qs, u"9.9k"_qs}, // never more than there is
        {u"999,999"_qs, u"999k"_qs},
        {u"1,234,567"_qs, u"1.2M"_qs},
        {u"9,223,372,036,854,775,807"_qs, u"9.2E"_qs},
        {u"1.234"_qs, u"1,2k"_qs},           // pt-BR, de
        {u"1234"_qs, u"1,2k"_qs},            // es, pl, pt-PT
        {u"1\u202f234"_qs, u"1,2k"_qs},      // fr
        {u"1\u2019234"_qs, u"1.2k"_qs},      // de-CH
        {u"12,34,567"_qs, u"1.2M"_qs},       // hi, en-IN
        {u"१,२३४"_qs, u"१.२k"_qs},           // hi, Devanagari
        {u"١\u066c٢٣٤"_qs, u"١\u066b٢k"_qs}, // ar
        {u"𞥑𞥒,𞥓𞥔𞥕"_qs, u"𞥑𞥒k"_qs},           // ff, Adlam: two units a digit
        {u""_qs, u""_qs},
        {u"paused"_qs, u"paus"_qs},
    };
    for (const auto& [exact, compact] : shortenings) {
        EXPECT_EQ(compactCount(exact).toStdString(), compact.toStdString()) << exact.toStdString();
    }
}

} // namespace fernhollow::tests
