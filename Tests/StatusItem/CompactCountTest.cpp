#include "Platform/StatusItem/CompactCount.h"

#include <gmock/gmock.h>

namespace fernhollow::tests {

struct Shortening {
    QString exact;
    QString compact;
};

void PrintTo(const Shortening& shortening, std::ostream* out) {
    *out << shortening.exact.toStdString();
}

class CompactCount : public testing::TestWithParam<Shortening> {};

TEST_P(CompactCount, FitsAnIcon) {
    EXPECT_EQ(compactCount(GetParam().exact).toStdString(), GetParam().compact.toStdString());
}

INSTANTIATE_TEST_SUITE_P(
    Lengths, CompactCount,
    testing::Values(Shortening{u"0"_qs, u"0"_qs}, Shortening{u"999"_qs, u"999"_qs},
                    Shortening{u"1,000"_qs, u"1.0k"_qs}, Shortening{u"1,999"_qs, u"1.9k"_qs},
                    Shortening{u"9,999"_qs, u"9.9k"_qs}, Shortening{u"12,345"_qs, u"12k"_qs},
                    Shortening{u"999,999"_qs, u"999k"_qs}, Shortening{u"1,234,567"_qs, u"1.2M"_qs},
                    Shortening{u"9,223,372,036,854,775,807"_qs, u"9.2E"_qs}));

INSTANTIATE_TEST_SUITE_P(Locales, CompactCount,
                         testing::Values(Shortening{u"1.234"_qs, u"1,2k"_qs},           // pt-BR, de
                                         Shortening{u"12.345"_qs, u"12k"_qs},           // pt-BR, de
                                         Shortening{u"1234"_qs, u"1,2k"_qs},            // es, pl, pt-PT
                                         Shortening{u"1\u202f234"_qs, u"1,2k"_qs},      // fr
                                         Shortening{u"1\u2019234"_qs, u"1.2k"_qs},      // de-CH
                                         Shortening{u"12,34,567"_qs, u"1.2M"_qs},       // hi, en-IN
                                         Shortening{u"१,२३४"_qs, u"१.२k"_qs},           // hi, Devanagari
                                         Shortening{u"١\u066c٢٣٤"_qs, u"١\u066b٢k"_qs}, // ar
                                         Shortening{u"𞥑𞥒,𞥓𞥔𞥕"_qs, u"𞥑𞥒k"_qs}));         // ff, Adlam

INSTANTIATE_TEST_SUITE_P(Oddities, CompactCount,
                         testing::Values(Shortening{u""_qs, u""_qs}, Shortening{u" "_qs, u""_qs},
                                         Shortening{u"-12,345"_qs, u"\u221212k"_qs},
                                         Shortening{u"paused"_qs, u"paus"_qs}));

} // namespace fernhollow::tests
