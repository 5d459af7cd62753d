#include "Presentation/DayText.h"
#include "Support/FakeClock.h"
#include "Support/TemporaryHome.h"

#include <gmock/gmock.h>

namespace fernhollow {
namespace {

using tests::at;
using tests::EnvironmentGuard;

struct DateCase {
    const char* locale;
    const char* full;
    const char* medium;
    const char* dayAndMonth;
};

class DaysInALocale : public testing::TestWithParam<DateCase> {};

TEST_P(DaysInALocale, AreWrittenAsItsPeopleDo) {
    const EnvironmentGuard zone("TZ", "UTC");
    const EnvironmentGuard all("LC_ALL", std::nullopt);
    const EnvironmentGuard language("LANG", "en_US.UTF-8");
    const EnvironmentGuard dates("LC_TIME", GetParam().locale);
    const DayText text;
    const Instant day = at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 12});
    EXPECT_EQ(text.fullDate(day), GetParam().full);
    EXPECT_EQ(text.mediumDate(day), GetParam().medium);
    EXPECT_EQ(text.dayAndMonth(day), GetParam().dayAndMonth);
}

INSTANTIATE_TEST_SUITE_P(
    Locales, DaysInALocale,
    testing::Values(DateCase{"C.UTF-8", "Thursday, March 5, 2026", "Mar 5, 2026", "05/03"},
                    DateCase{"pt_BR.UTF-8", "quinta-feira, 5 de março de 2026", "5 de mar. de 2026", "05/03"},
                    DateCase{"de_DE@euro", "Donnerstag, 5. März 2026", "05.03.2026", "05/03"},
                    DateCase{"ar_EG.UTF-8", "الخميس، ٥ مارس ٢٠٢٦", "٠٥\u200f/٠٣\u200f/٢٠٢٦", "٠٥/٠٣"}));

TEST(DaysOfTheSystem, FollowItsTimeZone) {
    EnvironmentGuard zone("TZ", "Pacific/Auckland");
    const DayText text("en_US");
    const Instant instant = at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 12}); // there it is 1:00
    EXPECT_EQ(text.mediumDate(instant), "Mar 6, 2026");
    EXPECT_EQ(text.fromNow(instant, at("UTC", {.year = 2026, .month = 3, .day = 7, .hour = 10})),
              "1 day ago");
    ::setenv("TZ", "America/Sao_Paulo", 1);
    EXPECT_EQ(text.mediumDate(instant), "Mar 5, 2026");
    EXPECT_EQ(text.dayAndMonth(instant), "05/03");
    EXPECT_EQ(text.fromNow(instant, at("UTC", {.year = 2026, .month = 3, .day = 7, .hour = 10})),
              "2 days ago");
}

struct DistanceCase {
    Calendar::Components day;
    Calendar::Components now;
    const char* text;
    const char* locale = "en_US";
};

class DistancesOfDays : public testing::TestWithParam<DistanceCase> {};

TEST_P(DistancesOfDays, CountDatesAndNotHours) {
    const EnvironmentGuard zone("TZ", "America/New_York"); // clocks change on March 8 and November 1
    const DayText text(GetParam().locale);
    EXPECT_EQ(text.fromNow(at("America/New_York", GetParam().day), at("America/New_York", GetParam().now)),
              GetParam().text);
}

constexpr Calendar::Components noon(int month, int day, int year = 2026) {
    return {.year = year, .month = month, .day = day, .hour = 12};
}
constexpr Calendar::Components firstMinute(int month, int day) {
    return {.year = 2026, .month = month, .day = day, .minute = 1};
}
constexpr Calendar::Components lastMinute(int month, int day) {
    return {.year = 2026, .month = month, .day = day, .hour = 23, .minute = 59};
}

INSTANTIATE_TEST_SUITE_P(
    Days, DistancesOfDays,
    testing::Values(DistanceCase{noon(3, 4), firstMinute(3, 5), "1 day ago"},
                    DistanceCase{noon(3, 4), lastMinute(3, 5), "1 day ago"},
                    DistanceCase{lastMinute(3, 7), firstMinute(3, 9), "2 days ago"}, // 24 hours and 2 minutes
                    DistanceCase{noon(3, 7), firstMinute(3, 10), "3 days ago"},
                    DistanceCase{noon(3, 2), firstMinute(3, 9), "1 week ago"},
                    DistanceCase{firstMinute(10, 26), lastMinute(11, 1), "6 days ago"}, // 168 hours
                    DistanceCase{noon(3, 1), lastMinute(3, 30), "4 weeks ago"},
                    DistanceCase{noon(2, 4), firstMinute(3, 5), "1 month ago"},
                    DistanceCase{noon(3, 5, 2024), firstMinute(3, 5), "2 years ago"},
                    DistanceCase{noon(3, 6), firstMinute(3, 5), "in 1 day"}));

INSTANTIATE_TEST_SUITE_P(Locales, DistancesOfDays,
                         testing::Values(DistanceCase{noon(3, 2), noon(3, 5), "há 3 dias", "pt_BR"},
                                         DistanceCase{noon(2, 26), noon(3, 5), "vor 1 Woche", "de_DE"},
                                         DistanceCase{noon(3, 2), noon(3, 5), "3 days ago", "en_IN"},
                                         DistanceCase{noon(3, 2), noon(3, 5), "قبل ٣ أيام", "ar_EG"},
                                         DistanceCase{noon(2, 26), noon(3, 5), "1 week ago", "tlh"}));

} // namespace
} // namespace fernhollow
