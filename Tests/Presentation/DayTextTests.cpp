#include "Presentation/DayText.h"
#include "Support/Testing.h"

#include <gmock/gmock.h>

namespace fernhollow::tests {
namespace {

using testing::HasSubstr;

TEST(DaysInALocale, HaveEnglishWordsAndTheUsersDigitsAndCalendar) {
    struct Case {
        const char *locale, *full, *medium, *dayAndMonth;
    };
    const EnvironmentGuard zone("TZ", "UTC");
    const EnvironmentGuard all("LC_ALL", std::nullopt);
    const EnvironmentGuard language("LANG", "en_US.UTF-8");
    const Instant day = at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 12});
    for (const auto& [locale, full, medium, dayAndMonth] :
         {Case{"C.UTF-8", "Thursday, March 5, 2026", "Mar 5, 2026", "05/03"},
          Case{"pt_BR.UTF-8", "5 March 2026", "5 Mar 2026", "05/03"},
          Case{"fa_IR.UTF-8", "14 Esfand 1404", "14 Esfand 1404", "۱۴/۱۲"},
          Case{"ar_EG.UTF-8", "5 March 2026", "5 Mar 2026", "٠٥/٠٣"}}) {
        const EnvironmentGuard dates("LC_TIME", locale);
        const DayText text;
        EXPECT_THAT(text.fullDate(day), HasSubstr(full));
        EXPECT_THAT(text.mediumDate(day), HasSubstr(medium));
        EXPECT_EQ(text.dayAndMonth(day), dayAndMonth);
    }
}

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

constexpr Calendar::Components noon(int month, int day) {
    return {.year = 2026, .month = month, .day = day, .hour = 12};
}
constexpr Calendar::Components firstMinute(int month, int day) {
    return {.year = 2026, .month = month, .day = day, .minute = 1};
}
constexpr Calendar::Components lastMinute(int month, int day) {
    return {.year = 2026, .month = month, .day = day, .hour = 23, .minute = 59};
}

TEST(DistancesOfDays, CountDatesAndNotHours) {
    struct Case {
        Calendar::Components day;
        Calendar::Components now;
        const char* text;
        const char* locale = "en_US";
    };
    const EnvironmentGuard zone("TZ", "America/New_York"); // clocks change on March 8 and November 1
    for (const auto& [day, now, text, locale] :
         {Case{noon(3, 4), lastMinute(3, 5), "1 day ago"},
          Case{lastMinute(3, 7), firstMinute(3, 9), "2 days ago"},    // 24 hours and 2 minutes
          Case{firstMinute(10, 26), lastMinute(11, 1), "6 days ago"}, // 168 hours
          Case{noon(3, 6), firstMinute(3, 5), "in 1 day"},
          Case{noon(2, 26), noon(3, 5), "vor 1 Woche", "de_DE"}}) {
        EXPECT_EQ(DayText(locale).fromNow(at("America/New_York", day), at("America/New_York", now)), text)
            << locale;
    }
}

} // namespace
} // namespace fernhollow::tests
