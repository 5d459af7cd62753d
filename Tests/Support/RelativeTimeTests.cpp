#include "Support/InternetTime.h"
#include "Support/RelativeTime.h"
#include "Support/TemporaryHome.h"

#include <gmock/gmock.h>

#include <ostream>

namespace fernhollow {
namespace {

using tests::EnvironmentGuard;

struct RelativeCase {
    const char* locale;
    const char* then;
    const char* text;
    const char* now = "2026-03-31T12:00:00Z";
};

void PrintTo(const RelativeCase& relative, std::ostream* out) {
    *out << relative.then << " in " << relative.locale;
}

class RelativeTimes : public testing::TestWithParam<RelativeCase> {};

TEST_P(RelativeTimes, NameTheLargestUnitThatPassed) {
    const auto then = parseInternetTime(GetParam().then);
    const auto now = parseInternetTime(GetParam().now);
    ASSERT_TRUE(then && now);
    EXPECT_EQ(RelativeTime(GetParam().locale)(*then, *now), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Units, RelativeTimes,
    testing::Values(RelativeCase{"en_US", "2026-03-31T12:00:00Z", "0 sec. ago"},
                    RelativeCase{"en_US", "2026-03-31T11:59:01Z", "59 sec. ago"},
                    RelativeCase{"en_US", "2026-03-31T11:00:01Z", "59 min. ago"},
                    RelativeCase{"en_US", "2026-03-31T11:00:00Z", "1 hr. ago"},
                    RelativeCase{"en_US", "2026-03-30T12:00:01Z", "23 hr. ago"},
                    RelativeCase{"en_US", "2026-03-30T12:00:00Z", "1 day ago"},
                    RelativeCase{"en_US", "2026-03-24T12:00:01Z", "6 days ago"},
                    RelativeCase{"en_US", "2026-03-24T12:00:00Z", "1 wk. ago"},
                    RelativeCase{"en_US", "2026-03-01T12:00:00Z", "4 wk. ago"},
                    RelativeCase{"en_US", "2026-02-28T12:00:00Z", "1 mo. ago"},
                    RelativeCase{"en_US", "2026-01-31T12:00:00Z", "1 mo. ago", "2026-02-28T12:00:00Z"},
                    RelativeCase{"en_US", "2025-03-31T12:00:01Z", "11 mo. ago"},
                    RelativeCase{"en_US", "2025-03-31T12:00:00Z", "1 yr. ago"},
                    RelativeCase{"en_US", "2024-02-29T12:00:00Z", "1 yr. ago", "2025-02-28T12:00:00Z"},
                    RelativeCase{"en_US", "1700-01-01T00:00:00Z", "560 yr. ago", "2260-01-01T00:00:00Z"},
                    RelativeCase{"en_US", "2026-03-31T12:00:02Z", "in 2 sec."}));

INSTANTIATE_TEST_SUITE_P(Locales, RelativeTimes,
                         testing::Values(RelativeCase{"pt_BR", "2026-03-28T12:00:00Z", "há 3 dias"},
                                         RelativeCase{"de_DE", "2026-03-28T12:00:00Z", "vor 3 Tagen"},
                                         RelativeCase{"de_DE", "2026-03-31T11:55:00Z", "vor 5 Min."},
                                         RelativeCase{"ar_EG", "2026-03-28T12:00:00Z", "قبل ٣ أيام"},
                                         RelativeCase{"ar_EG", "2026-03-29T12:00:00Z", "قبل يومين"},
                                         RelativeCase{"not a locale", "2026-03-28T12:00:00Z", "3 days ago"},
                                         RelativeCase{"tlh", "2026-03-28T12:00:00Z", "3 days ago"}));

TEST(RelativeTimesOfTheUser, FollowTheLocaleOfDatesBeforeTheLanguage) {
    const EnvironmentGuard all("LC_ALL", std::nullopt);
    const EnvironmentGuard language("LANG", "en_US.UTF-8");
    const EnvironmentGuard dates("LC_TIME", "pt_BR.UTF-8");
    const EnvironmentGuard numbers("LC_NUMERIC", "de_DE.UTF-8");
    const Instant now = *parseInternetTime("2026-03-31T12:00:00Z");
    EXPECT_EQ(RelativeTime()(now - std::chrono::hours(72), now), "há 3 dias");
}

} // namespace
} // namespace fernhollow
