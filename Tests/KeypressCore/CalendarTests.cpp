#include "KeypressCore/Calendar.h"
#include "Support/Testing.h"

#include <ctime>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

namespace fernhollow::tests {
namespace {

TEST(CalendarDays, AreCountedByTheirDatesNotByTheirHours) {
    const Calendar berlin("Europe/Berlin"); // 29 March 2026 has 23 hours, 25 October has 25
    const Instant saturday = at("Europe/Berlin", {.year = 2026, .month = 3, .day = 28, .hour = 12});
    const Instant sunday = berlin.addingDays(saturday, 1).value();

    EXPECT_EQ(sunday - saturday, 23h);
    EXPECT_EQ(berlin.wholeDays(saturday, sunday), 1);
    EXPECT_EQ(berlin.wholeDays(sunday, saturday), -1);
    EXPECT_EQ(berlin.noon(sunday - 7h), sunday);
    EXPECT_EQ(berlin.addingDays(saturday, -29),
              at("Europe/Berlin", {.year = 2026, .month = 2, .day = 27, .hour = 12}));
}

TEST(CalendarDate, TakesTheNextExistingAndTheFirstOfRepeatedTimes) {
    const Calendar berlin("Europe/Berlin");
    const Instant skipped =
        berlin.date({.year = 2026, .month = 3, .day = 29, .hour = 2, .minute = 30}).value();
    EXPECT_EQ(berlin.components(skipped).hour, 3);
    const Instant repeated =
        berlin.date({.year = 2026, .month = 10, .day = 25, .hour = 2, .minute = 30}).value();
    EXPECT_EQ(berlin.components(repeated + 1h).hour, 2);
}

/// Compares the calendar with the C library in each half hour of two years, at it and just before it.
void expectTimesOfTheCLibrary() {
    ::tzset();
    const Calendar calendar = Calendar::autoupdatingCurrent().snapshot();
    std::time_t second = 1735689599; // the last of 2024
    for (int step = 0; step < 4 * 17520; ++step, second += step % 2 == 1 ? 1 : 1799) {
        std::tm expected{};
        ::localtime_r(&second, &expected);
        const auto actual = calendar.components(std::chrono::system_clock::from_time_t(second));
        ASSERT_EQ(std::tuple(actual.month, actual.day, actual.hour, actual.minute),
                  std::tuple(expected.tm_mon + 1, expected.tm_mday, expected.tm_hour, expected.tm_min))
            << "at " << second;
    }
}

TEST(AutoupdatingCalendar, ReadsEverySettingOfTzAsTheCLibraryDoes) {
    const TemporaryHome home;
    std::filesystem::copy_file("/usr/share/zoneinfo/Europe/Berlin", home.path() / "copied");
    const std::vector<std::string> values{"",
                                          ":",
                                          ":America/New_York",
                                          "localtime",
                                          "/usr/share/zoneinfo/Australia/Lord_Howe",
                                          "posix/Africa/Casablanca",
                                          ":" + (home.path() / "copied").native(),
                                          "EST5EDT",
                                          "UTC-5:45",
                                          "<+0330>-3:30",
                                          "PST8PDT,J60/0,J300/24:30:10",
                                          "IST-1GMT0,M10.5.0,M3.5.0/1",
                                          "<-02>2<-01>,M3.5.0/-1,M10.5.0/0",
                                          "ABC3DEF,59,304/1",
                                          "Nowhere/Land"};
    for (const std::string& value : values) {
        const EnvironmentGuard zone("TZ", value);
        SCOPED_TRACE(value);
        expectTimesOfTheCLibrary();
    }
}

TEST(SystemTimeZone, KeepsASummerTimeOfTheWholeYear) {
    const EnvironmentGuard zone("TZ", "EST5EDT,0/0,J365/25");
    for (const int month : {1, 7, 12}) {
        const Instant noon = at("UTC", {.year = 2026, .month = month, .day = 31, .hour = 12});
        EXPECT_EQ(Calendar::autoupdatingCurrent().hour(noon), 8) << month;
    }
}

TEST(SystemTimeZone, LogsWhatItCannotResolve) {
    const TemporaryHome home;
    const EnvironmentGuard zone("TZ", "CET-1CEST,nonsense");
    EXPECT_EQ(Calendar::autoupdatingCurrent().hour(Instant()), 0);
    EXPECT_THAT(home.log(), testing::HasSubstr("[SystemTimeZone] TZ=CET-1CEST,nonsense"));
}

} // namespace
} // namespace fernhollow::tests
