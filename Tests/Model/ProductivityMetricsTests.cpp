#include "KeypressCore/Calendar.h"
#include "Model/ProductivityMetrics.h"
#include "Model/RecentDays.h"
#include "Support/Testing.h"

#include <algorithm>
#include <cstdint>
#include <functional>

namespace fernhollow::tests {
namespace {

const DayKey today("2026-03-05");

ProductivityMetrics calculate(std::int64_t todayTotal, const std::vector<HourlyCountRow>& hours,
                              const std::vector<DailyCountRow>& month, const char* zone = "UTC",
                              Calendar::Components now = {.year = 2026, .month = 3, .day = 5, .hour = 18}) {
    const Calendar calendar(zone);
    return ProductivityMetrics::calculate(todayTotal, hours, {}, {}, month, calendar,
                                          calendar.date(now).value());
}

std::vector<HourlyCountRow> hours(const std::vector<std::pair<int, std::int64_t>>& counts) {
    std::vector<HourlyCountRow> rows;
    for (const auto& [hour, count] : counts) {
        rows.push_back({today, hour, count});
    }
    return rows;
}

/// `count` days with one press each, the last one of them today; the newest first.
std::vector<DailyCountRow> month(int count) {
    const Calendar calendar("UTC");
    const Instant noon = at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 12});
    std::vector<DailyCountRow> rows;
    for (int age = 0; age < count; ++age) {
        rows.push_back({DayKey(calendar.addingDays(noon, -age).value(), calendar), 1});
    }
    return rows;
}

TEST(Metrics, FindTheFirstOfTheBusiestHours) {
    EXPECT_EQ(calculate(0, hours({{9, 0}}), {}).peakHour, std::nullopt) << "without a press";
    const auto metrics = calculate(300, hours({{9, 120}, {14, 120}, {10, 30}, {11, 0}}), {});
    EXPECT_EQ(metrics.peakHour, 9);
    EXPECT_EQ(metrics.activeHours, 3);
    EXPECT_DOUBLE_EQ(metrics.avgPerHour, 100);
    ASSERT_THAT(metrics.todayHourly, SizeIs(24));
    EXPECT_EQ(metrics.todayHourly[2], (ProductivityMetrics::HourlyMetric{10, 30}));
    EXPECT_EQ(metrics.todayHourly[4], (ProductivityMetrics::HourlyMetric{4, 0}));
    EXPECT_EQ(metrics.todayHourly[23], (ProductivityMetrics::HourlyMetric{23, 0}));
}

TEST(Metrics, AddUpWeeksAndMonthWithTodaysOwnTotal) {
    const auto metrics = calculate(50, {}, month(30));
    EXPECT_EQ(metrics.monthTotal, 79);
    EXPECT_EQ(metrics.weekTotal, 56);
    EXPECT_EQ(metrics.lastWeekTotal, 7);
    EXPECT_DOUBLE_EQ(metrics.avgPerDay, 79.0 / 30);
    ASSERT_THAT(metrics.monthDaily, SizeIs(30));
    EXPECT_EQ(metrics.monthDaily.front().count, 50) << "in the order given";

    const auto shorter = calculate(50, {}, month(5));
    EXPECT_EQ(shorter.weekTotal, 54);
    EXPECT_EQ(shorter.lastWeekTotal, 0);
    EXPECT_EQ(calculate(50, {}, month(9)).lastWeekTotal, 2);
}

/// The 30 days up to `now` with one press each.
std::vector<DailyCountRow> recentDays(const char* zone, Calendar::Components now) {
    const Calendar calendar(zone);
    std::vector<DailyCountRow> rows;
    RecentDays days;
    for (const RecentDays::Day& day : days.upTo(calendar.date(now).value(), calendar)) {
        EXPECT_EQ(DayKey(day.noon, calendar), day.key);
        EXPECT_EQ(calendar.hour(day.noon), 12);
        rows.push_back({day.key, 1});
    }
    EXPECT_EQ(std::ranges::adjacent_find(rows, std::ranges::greater_equal(), &DailyCountRow::day),
              rows.end());
    return rows;
}

TEST(Metrics, KnowTodayInEachOfItsHours) {
    struct Day {
        const char* zone;
        int year, month, day;
    };
    // Days on which a clock change skips or repeats midnight, the day after one, and a zone that is odd.
    for (const auto& [zone, year, month, day] :
         {Day{"America/Sao_Paulo", 2018, 11, 4}, Day{"America/Sao_Paulo", 2018, 2, 18},
          Day{"Pacific/Auckland", 1970, 1, 1}, // its noon is the epoch
          Day{"Africa/Cairo", 2026, 4, 24}, Day{"Africa/Cairo", 2026, 10, 30},
          Day{"Asia/Beirut", 2026, 3, 29}, Day{"Asia/Beirut", 2026, 10, 26},
          Day{"Asia/Kathmandu", 2026, 3, 5}}) {
        for (const int hour : {0, 1, 12, 23}) {
            SCOPED_TRACE(zone + std::string(" at ") + std::to_string(hour));
            const Calendar::Components now{.year = year, .month = month, .day = day, .hour = hour};
            const auto metrics = calculate(50, {}, recentDays(zone, now), zone, now);
            EXPECT_EQ(metrics.monthTotal, 79);
            EXPECT_EQ(metrics.weekTotal, 56);
            EXPECT_THAT(metrics.monthDaily, SizeIs(30));
        }
    }
}

} // namespace
} // namespace fernhollow::tests
