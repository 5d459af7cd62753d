// What the dashboard makes of the days: 15 filled days, two weeks, a column for each day.

#include "KeypressCore/DayKey.h"
#include "Presentation/DashboardSeries.h"
#include "Presentation/DayColumns.h"
#include "Support/Testing.h"

#include <cstdint>

namespace fernhollow::tests {
namespace {

using DashboardSeries::calculateWeekTotals;
using DashboardSeries::makeFilledDailyData;

using Records = std::vector<AppTracker::DailyAppStats>;

/// Noon of the day that many days before 5 March 2026, and records of it.
class Days : public testing::Test {
protected:
    Instant day(int age) const { return calendar_.addingDays(now_, -age).value(); }

    AppTracker::DailyAppStats record(int age, std::int64_t count, const std::string& app = "org.a") const {
        return {day(age), app, "Name of " + app, count};
    }

    /// Age, identifier and count of each record.
    std::vector<std::tuple<int, std::string, std::int64_t>> shown(const Records& records) const {
        std::vector<std::tuple<int, std::string, std::int64_t>> result;
        for (const auto& each : records) {
            EXPECT_EQ(calendar_.hour(each.day), 12);
            result.emplace_back(calendar_.wholeDays(each.day, now_), each.bundleId, each.count);
        }
        return result;
    }

    Records filled(const Records& daily, const std::optional<ProductivityMetrics>& metrics = {}) const {
        return makeFilledDailyData(daily, metrics, minValidDate_, calendar_, now_ + std::chrono::hours(3));
    }

    static ProductivityMetrics metrics(std::vector<ProductivityMetrics::DailyMetric> days) {
        ProductivityMetrics result;
        result.monthDaily = std::move(days);
        return result;
    }

    Calendar calendar_{"Europe/Berlin"};
    Instant now_ = at("Europe/Berlin", {.year = 2026, .month = 3, .day = 5, .hour = 12});
    Instant minValidDate_ = at("Europe/Berlin", {.year = 2026, .month = 1, .day = 14});
};

TEST_F(Days, TakeTheAccountsTotalOnlyWhereNoApplicationIsKnown) {
    minValidDate_ = day(3);
    const auto records = shown(filled({record(20, 9), record(0, 5), record(2, 6, "org.b"), record(2, 7)},
                                      metrics({{day(0), 50},
                                               {day(1), 40},
                                               {day(3), 30},
                                               {day(4), 20}, // before any history
                                               {day(5), 0},
                                               {day(15), 10},
                                               {day(-1), 10}})));
    ASSERT_EQ(records.size(), 16U);
    EXPECT_THAT(std::vector(records.begin(), records.begin() + 5),
                ElementsAre(std::tuple(0, "org.a", 5), std::tuple(2, "org.b", 6), std::tuple(2, "org.a", 7),
                            std::tuple(1, "all", 40), std::tuple(3, "all", 30)));
    for (std::size_t i = 5; i < records.size(); ++i) {
        EXPECT_EQ(records[i], std::tuple(static_cast<int>(i) - 1, std::string("_placeholder"), 0));
    }
}

TEST_F(Days, AddUpToTwoWeeks) {
    Records records;
    for (int age = 0; age < 20; ++age) {
        records.push_back(record(age, age < 7 ? 1 : 10));
    }
    records.push_back(record(6, 100, "org.b"));
    const auto totals = calculateWeekTotals(records, calendar_, now_);
    EXPECT_EQ(totals.thisWeek, 107);
    EXPECT_EQ(totals.lastWeek, 70);
    EXPECT_EQ(calculateWeekTotals({}, calendar_, now_).thisWeek, 0);
    EXPECT_EQ((DashboardSeries::WeekTotals{5, 0}.change()), 0);
    EXPECT_EQ((DashboardSeries::WeekTotals{50, 100}.change()), -50);
}

TEST(DaysOfEachZone, AreFilledOnceAndReadAsTheirOwn) {
    struct Fortnight {
        const char* zone;
        int year, month, day;
    };
    // A clock change lies within each of these fortnights, most of them at midnight. The last zone is odd.
    for (const auto& [zone, year, month, day] :
         {Fortnight{"America/Sao_Paulo", 2018, 11, 6}, Fortnight{"America/Sao_Paulo", 2018, 2, 20},
          Fortnight{"Africa/Cairo", 2026, 4, 26}, Fortnight{"Africa/Cairo", 2026, 11, 1},
          Fortnight{"Asia/Beirut", 2026, 3, 30}, Fortnight{"Asia/Beirut", 2026, 10, 25},
          Fortnight{"Europe/Berlin", 2026, 3, 30}, Fortnight{"Australia/Lord_Howe", 2026, 4, 7},
          Fortnight{"Asia/Kathmandu", 2026, 3, 5}}) {
        const Calendar calendar(zone);
        for (const int hour : {0, 12, 23}) {
            SCOPED_TRACE(zone + std::string(" at ") + std::to_string(hour));
            const Instant now =
                calendar.date({.year = year, .month = month, .day = day, .hour = hour}).value();
            const DayColumns columns(15, now, calendar);
            ASSERT_EQ(columns.count(), 15);
            EXPECT_EQ(DayKey(columns.noons().back(), calendar), DayKey(now, calendar));
            EXPECT_EQ(columns.column(now), 14);
            EXPECT_EQ(columns.column(calendar.addingDays(now, 1).value()), std::nullopt);
            const auto filled = makeFilledDailyData({}, std::nullopt, Instant(), calendar, now);
            ASSERT_EQ(filled.size(), 15U);
            for (int column = 0; column < 15; ++column) {
                const Instant noon = columns.noons()[static_cast<std::size_t>(column)];
                EXPECT_EQ(columns.column(noon), column);
                EXPECT_EQ(columns.column(calendar.startOfDay(noon)), column);
                EXPECT_EQ(dateAtLocation(noon + readingAhead, columns.noons(), calendar), noon);
                EXPECT_EQ(columns.column(filled[static_cast<std::size_t>(14 - column)].day), column);
            }
        }
    }
}

} // namespace
} // namespace fernhollow::tests
