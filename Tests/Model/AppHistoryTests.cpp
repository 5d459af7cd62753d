// The account's history per application: what is merged, what is published, and when.

#include "Model/AppHistory.h"
#include "SyncFixture.h"

#include <cstdint>

namespace fernhollow::tests {
namespace {

using Record = AppTracker::DailyAppStats;

class AppHistoryTest : public SyncFixture {
protected:
    /// Day of March, identifier, name and count of each record.
    std::vector<std::string> history() {
        std::vector<std::string> shown;
        for (const Record& record : model_->appTracker().last30DaysAppDaily.get()) {
            EXPECT_EQ(calendar_.hour(record.day), 12);
            shown.push_back(std::to_string(calendar_.components(record.day).day) + " " + record.bundleId +
                            " " + record.appName + " " + std::to_string(record.count));
        }
        return shown;
    }

    void remember(const char* day, const std::string& app, std::int64_t count) {
        await(store_->registerApp(app, "Here " + app, 1));
        await(store_->incrementAppHourly(DayKey(day), 9, app, count, 1));
    }

    void update(const AppDailyCache& remote) {
        tasks_.beginWaiting();
        await(model_->appTracker().updateLast30DaysAppDaily(std::make_shared<const AppDailyCache>(remote)));
    }

    /// The change of the day starts another refresh beside the first one; this ends after both.
    void refreshOnANewDay() {
        refresh();
        refresh();
    }

    Calendar calendar_ = Calendar::autoupdatingCurrent();
};

TEST_F(AppHistoryTest, TakesTheLargerCountOfEachPastDayAndTodayFromHere) {
    openStore();
    remember("2026-03-04", "org.more", 120);
    remember("2026-03-04", "org.less", 100);
    remember("2026-03-04", "org.same", 7);
    remember("2026-03-03", "org.only", 5);
    remember("2026-03-05", "org.more", 3);
    startModel();
    refresh();
    const RemoteAppCounts there{
        {"org.more", {"There", 100}}, {"org.less", {"There", 120}}, {"org.same", {"There", 7}}};
    update({{"2026-03-04", there},
            {"2026-03-05", there},
            {"2026-03-05T08:00:00", there},
            {"2026-03-06", there},
            {"2026-01-13", there},
            {"yesterday", there}});
    EXPECT_THAT(history(), UnorderedElementsAre("4 org.more Here org.more 120", "4 org.less There 120",
                                                "4 org.same There 7", "3 org.only Here org.only 5",
                                                "5 org.more Here org.more 3"));
}

TEST_F(AppHistoryTest, BeginsAnewWithTheDayTheAccountAndTheZone) {
    openStore();
    remember("2026-03-04", "org.a", 1);
    await(store_->registerApp("org.a", "Name of org.a", 1)); // another name alone would not be published
    startModel();
    press(2);
    refresh();
    clock_.set(at("UTC", {.year = 2026, .month = 3, .day = 6, .hour = 0, .second = 5}));
    refreshOnANewDay();
    EXPECT_THAT(history(), UnorderedElementsAre("4 org.a Name of org.a 1", "5 org.a Name of org.a 2"));

    clock_.set(at("UTC", {.year = 2026, .month = 3, .day = 4, .hour = 23})); // set back
    refreshOnANewDay();
    EXPECT_THAT(history(), UnorderedElementsAre("4 org.a Name of org.a 1"));

    const EnvironmentGuard east("TZ", "Pacific/Kiritimati"); // where it is the 5th already
    refreshOnANewDay();
    refresh();
    EXPECT_THAT(history(), UnorderedElementsAre("4 org.a Name of org.a 1", "5 org.a Name of org.a 2"));

    signIn("bea@example.com");
    settle();
    EXPECT_THAT(history(), IsEmpty());
    EXPECT_TRUE(!model_->metrics.get() || model_->metrics.get()->todayTotal == 0);
}

TEST_F(AppHistoryTest, CombinesTheAccountsFiguresWithTodaysOwn) {
    answers_["get_account_daily_totals"].body =
        R"([{"day":"2026-03-05","total_count":9},{"day":"2026-03-04","total_count":100}])";
    answers_["get_account_hourly_totals"].body =
        R"([{"hour":8,"total_count":40},{"hour":9,"total_count":2}])";
    startModel();
    EXPECT_EQ(model_->metrics.get(), std::nullopt);
    press(5); // at nine o'clock
    pass(1s);
    pass(1s);
    refresh();
    const auto& metrics = model_->metrics.get();
    ASSERT_TRUE(metrics);
    EXPECT_EQ(metrics->todayTotal, 5);
    EXPECT_EQ(metrics->monthTotal, 105);
    EXPECT_EQ(metrics->weekTotal, 105);
    EXPECT_EQ(metrics->peakHour, 8);
    EXPECT_EQ(metrics->activeHours, 2);
    EXPECT_DOUBLE_EQ(metrics->avgPerHour, 2.5);
    EXPECT_EQ(metrics->todayHourly.at(1), (ProductivityMetrics::HourlyMetric{9, 5}));
}

TEST(AppColor, IsTheSameForTheSameIdentifier) {
    EXPECT_EQ(AppTracker::color(""), (AppTracker::Color{1.0, 0.5, 0.05}));  // 5381 % 20 = 1
    EXPECT_EQ(AppTracker::color("a"), (AppTracker::Color{0.94, 0.2, 0.9})); // (5381 * 33 + 97) % 20 = 10
    // One character, U+7F51: (5381 * 33 + 32593) % 20 = 6
    EXPECT_EQ(AppTracker::color("\xe7\xbd\x91"), (AppTracker::Color{0.89, 0.47, 0.76}));
}

} // namespace
} // namespace fernhollow::tests
