#include "ModelFixture.h"

#include <cstdint>

namespace fernhollow::tests {
namespace {

class Refresh : public ModelFixture {
protected:
    Refresh() { signIn("ana@example.com"); }

    void store(const DayKey& day, std::int64_t count) {
        DailyCountsStore store(DailyCountsStore::urlForAccount("ana@example.com"));
        await(store.increment(day, count, 1));
    }

    std::vector<std::int64_t> shownCounts() {
        std::vector<std::int64_t> counts;
        for (const auto& point : model_->last30Days.get()) {
            counts.push_back(point.count);
        }
        return counts;
    }
};

TEST_F(Refresh, AddsWhatIsNotWrittenToWhatIsStoredAndKeepsItWhenTheStoreCannotBeRead) {
    store(today, 100);
    start();
    press(5);
    refresh();
    EXPECT_EQ(model_->todayCount.get(), 105);
    std::filesystem::resize_file(DailyCountsStore::urlForAccount("ana@example.com"), 0);
    std::filesystem::remove(DailyCountsStore::urlForAccount("ana@example.com").native() + "-wal");
    press(1);
    refresh();
    EXPECT_EQ(model_->todayCountAggregated.get(), 106);
}

TEST_F(Refresh, SeesANewDayWithinASecondAndWritesTheOldOnesPresses) {
    start();
    press(7);
    clock_.set(at("UTC", {.year = 2026, .month = 3, .day = 6}));
    clock_.advance(1s);
    EXPECT_TRUE(waitUntil([&] { return storedCount(today) == 7; }));
    EXPECT_EQ(model_->menuBarTitle(), "0");
    press(2);
    flush();
    EXPECT_EQ(storedCount(today), 7);
    EXPECT_EQ(storedCount(tomorrow), 2);
    EXPECT_THAT(home_.log(), HasSubstr("[AppModel] Day rollover detected: 2026-03-05 -> 2026-03-06\n"));
}

TEST_F(Refresh, TakesAnEarlierDayOfAnotherZoneOrClockForANewDay) {
    start();
    press(3);
    {
        const EnvironmentGuard hawaii("TZ", "Pacific/Honolulu"); // 23:00 on the day before
        press(4);
        flush();
        EXPECT_THAT(storedHours(DayKey("2026-03-04")),
                    ElementsAre(HourlyCountRow{DayKey("2026-03-04"), 23, 4}));
    }
    press(5);
    flush();
    EXPECT_EQ(storedCount(today), 8);
    EXPECT_EQ(model_->todayCount.get(), 8);
    EXPECT_EQ(storedCount(DayKey("2026-03-04")), 4);
}

TEST_F(Refresh, ShowsThirtyDaysEndingToday) {
    store(DayKey("2026-02-04"), 4);
    store(DayKey("2026-02-03"), 99); // the thirty-first day
    store(DayKey("2026-02-05"), -3);
    start();
    press(2);
    refresh();
    const auto points = model_->last30Days.get();
    ASSERT_EQ(points.size(), 30u);
    EXPECT_EQ(points.front(),
              (DailyCountPoint{at("UTC", {.year = 2026, .month = 2, .day = 4, .hour = 12}), 4}));
    EXPECT_EQ(points[1].count, 0);
    EXPECT_EQ(points.back(),
              (DailyCountPoint{at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 12}), 2}));
}

TEST_F(Refresh, ShowsNothingBeforeTheFirstDayOfAnyHistory) {
    clock_.set(at("UTC", {.year = 2026, .month = 1, .day = 20, .hour = 9}));
    store(DayKey("2026-01-13"), 99);
    store(DayKey("2026-01-14"), 4);
    start();
    refresh();
    EXPECT_THAT(shownCounts(), ElementsAre(4, 0, 0, 0, 0, 0, 0));

    clock_.set(at("UTC", {.year = 2026, .month = 1, .day = 13, .hour = 23}));
    refresh();
    EXPECT_THAT(shownCounts(), IsEmpty());
}

TEST_F(Refresh, StartsTheMonitorAgainEachSecondUntilItRuns) {
    isMonitorAllowed_ = false;
    start();
    EXPECT_EQ(monitor_->starts, 1);
    clock_.advance(1s);
    EXPECT_TRUE(waitUntil([&] { return clock_.sleepers() == 2; }));
    EXPECT_EQ(monitor_->starts, 2);
    EXPECT_THAT(home_.log(),
                HasSubstr("[AppModel] Keyboard monitor failed to start - will retry on next refresh\n"));

    monitor_->isAllowed = true;
    clock_.advance(1s);
    EXPECT_TRUE(monitor_->isRunning);
    EXPECT_TRUE(waitUntil([&] { return clock_.sleepers() == 2; }));
    clock_.advance(1s);
    EXPECT_EQ(monitor_->starts, 3); // runs, so it is left alone

    monitor_->handlers.onStopped(); // the desktop took it away
    EXPECT_TRUE(waitUntil([&] { return clock_.sleepers() == 2; }));
    clock_.advance(1s);
    EXPECT_EQ(monitor_->starts, 4);

    model_->isPaused.set(true);
    EXPECT_TRUE(waitUntil([&] { return clock_.sleepers() == 2; }));
    clock_.advance(1s);
    EXPECT_FALSE(monitor_->isRunning);
}

} // namespace
} // namespace fernhollow::tests
