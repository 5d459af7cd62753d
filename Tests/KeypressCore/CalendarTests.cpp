#include "KeypressCore/Calendar.h"
#include "Support/FakeClock.h"
#include "Support/TemporaryHome.h"

#include <gmock/gmock.h>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;
using tests::at;
using tests::EnvironmentGuard;

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

TEST(AutoupdatingCalendar, FollowsTheZoneOfTheSystem) {
    const Instant instant = at("UTC", {.year = 2026, .month = 2, .day = 1, .hour = 23});
    const EnvironmentGuard utc("TZ", "UTC");
    const Calendar calendar = Calendar::autoupdatingCurrent();
    Calendar copy("UTC");
    copy = calendar;
    EXPECT_EQ(calendar.hour(instant), 23);

    const EnvironmentGuard kolkata("TZ", "Asia/Kolkata");
    EXPECT_EQ(calendar.hour(instant), 4);
    EXPECT_EQ(calendar.components(instant).day, 2);
    EXPECT_EQ(copy.hour(instant), 4);
    EXPECT_EQ(Calendar("UTC").hour(instant), 23);
}

TEST(CalendarOfAnUnknownZone, IsUtc) {
    const Instant instant = at("UTC", {.year = 2026, .month = 2, .day = 1, .hour = 23});
    EXPECT_EQ(Calendar("Nowhere/Land").hour(instant), 23);
}

} // namespace
} // namespace fernhollow
