#include "Support/InternetTime.h"
#include "Support/RelativeTime.h"
#include "Support/Testing.h"

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

} // namespace
} // namespace fernhollow::tests
