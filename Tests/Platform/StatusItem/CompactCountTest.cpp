#include "Platform/StatusItem/CompactCount.h"

#include "Support/Testing.h"

namespace fernhollow::tests {

TEST(CompactCount, FitsAnIconInEveryLocale) {
    const std::vector<std::pair<QString, QString>> shortenings{
        {QStringLiteral("0"), QStringLiteral("0")},
        {QStringLiteral("999"), QStringLiteral("999")},
        {QStringLiteral("1,000"), QStringLiteral("1.0k")},
        {QStringLiteral("9,999"), QStringLiteral("9.9k")}, // never more than there is
        {QStringLiteral("999,999"), QStringLiteral("999k")},
        {QStringLiteral("1,234,567"), QStringLiteral("1.2M")},
        {QStringLiteral("9,223,372,036,854,775,807"), QStringLiteral("9.2E")},
        {QStringLiteral("1.234"), QStringLiteral("1,2k")},           // pt-BR, de
        {QStringLiteral("1234"), QStringLiteral("1,2k")},            // es, pl, pt-PT
        {QStringLiteral("1\u202f234"), QStringLiteral("1,2k")},      // fr
        {QStringLiteral("1\u2019234"), QStringLiteral("1.2k")},      // de-CH
        {QStringLiteral("12,34,567"), QStringLiteral("1.2M")},       // hi, en-IN
        {QStringLiteral("१,२३४"), QStringLiteral("१.२k")},           // hi, Devanagari
        {QStringLiteral("١\u066c٢٣٤"), QStringLiteral("١\u066b٢k")}, // ar
        {QStringLiteral("𞥑𞥒,𞥓𞥔𞥕"), QStringLiteral("𞥑𞥒k")},           // ff, Adlam: two units a digit
        {QStringLiteral(""), QStringLiteral("")},
        {QStringLiteral("paused"), QStringLiteral("paus")},
    };
    for (const auto& [exact, compact] : shortenings) {
        EXPECT_EQ(compactCount(exact).toStdString(), compact.toStdString()) << exact.toStdString();
    }
}

} // namespace fernhollow::tests
