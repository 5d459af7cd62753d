#include "KeypressCore/DailyCountsStore.h"
#include "Model/AppTracker.h"
#include "Support/ApplicationIdentity.h"
#include "Support/EventLoop.h"
#include "Support/FakeClock.h"
#include "Support/TaskScope.h"
#include "Support/TemporaryHome.h"

#include <gmock/gmock.h>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::await;

using Total = AppTracker::AppStats;
using Hour = AppTracker::HourlyAppStats;

const DayKey today("2026-03-05");
const DayKey tomorrow("2026-03-06");

class Tracker : public testing::Test {
protected:
    ~Tracker() override {
        tasks_.stop();
        await(tracker_->refreshFromDisk()); // whatever is under way ends before what it stands on
    }

    void press(const std::string& app, int times = 1) {
        for (int i = 0; i < times; ++i) {
            tracker_->recordKeystroke(app, "Name of " + app, clock_.now());
        }
    }

    std::shared_ptr<DailyCountsStore> open(const char* email) {
        return std::make_shared<DailyCountsStore>(DailyCountsStore::urlForAccount(email));
    }

    tests::TemporaryHome home_;
    tests::EnvironmentGuard zone_{"TZ", "UTC"};
    tests::FakeClock clock_{tests::at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 9, .minute = 59})};
    TaskScope tasks_;
    std::shared_ptr<DailyCountsStore> store_ = open("ana@example.com");
    std::shared_ptr<AppTracker> tracker_ = AppTracker::create(clock_, tasks_, store_);
};

TEST_F(Tracker, ShowsPressesAtOnceByHourAndApplication) {
    press("org.a");
    press("org.b", 2);
    clock_.advance(1min);
    press("org.a");

    EXPECT_THAT(tracker_->todayHourlyByApp.get(),
                ElementsAre(Hour{9, "org.a", "Name of org.a", 1}, Hour{9, "org.b", "Name of org.b", 2},
                            Hour{10, "org.a", "Name of org.a", 1}));
    // Equal counts keep their order: org.b was ahead when org.a caught up.
    EXPECT_THAT(tracker_->todayAppTotals.get(), ElementsAre(Total{"org.b", "Name of org.b", 2, false},
                                                            Total{"org.a", "Name of org.a", 2, false}));
    tracker_->recordKeystroke("org.a", "New name", clock_.now());
    EXPECT_THAT(tracker_->todayAppTotals.get().front(), (Total{"org.a", "New name", 3, false}));
}

TEST_F(Tracker, LeavesThisProgramsOwnWindowsOut) {
    press(std::string(applicationIdentifier), 5);
    EXPECT_THAT(tracker_->todayAppTotals.get(), IsEmpty());
    await(tracker_->flushPending());
    EXPECT_THAT(await(store_->fetchAppHourlyCounts(today)), IsEmpty());
    tracker_->ignoreSelf.set(false);
    press(std::string(applicationIdentifier));
    EXPECT_EQ(tracker_->todayAppTotals.get().size(), 1u);
}

TEST_F(Tracker, FlushesItsBufferOnceAndShowsTheSameAfterwards) {
    press("org.a", 3);
    press("org.b", 3);
    int changes = 0;
    await(tracker_->refreshFromDisk());
    const auto totals = tracker_->todayAppTotals.get();
    const auto observation = tracker_->todayAppTotals.observe([&] { ++changes; });
    const auto hourly = tracker_->todayHourlyByApp.observe([&] { ++changes; });

    await(tracker_->flushPending());
    await(tracker_->flushPending());
    await(tracker_->refreshFromDisk());
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(tracker_->todayAppTotals.get(), totals);
    EXPECT_THAT(
        await(store_->fetchAppHourlyCounts(today)),
        ElementsAre(AppHourlyCountRow{today, 9, "org.a", 3}, AppHourlyCountRow{today, 9, "org.b", 3}));
    EXPECT_EQ(tracker_->appRegistry.get().size(), 2u);

    press("org.b", 2);
    await(tracker_->refreshFromDisk()); // what is stored and what is not, together
    EXPECT_THAT(tracker_->todayAppTotals.get().front(), (Total{"org.b", "Name of org.b", 5, false}));
}

TEST_F(Tracker, NamesApplicationsFromTheRegistryOrByTheirIdentifier) {
    await(store_->registerApp("org.hidden", "Hidden", 1));
    await(store_->setAppHidden("org.hidden", true));
    await(store_->incrementAppHourly(today, 8, "org.hidden", 4, 1));
    await(store_->incrementAppHourly(today, 8, "org.nameless", 6, 1));
    await(tracker_->refreshFromDisk());
    EXPECT_THAT(tracker_->todayAppTotals.get(), ElementsAre(Total{"org.nameless", "org.nameless", 6, false},
                                                            Total{"org.hidden", "Hidden", 4, true}));
}

TEST_F(Tracker, WritesTheOldDaysBufferToTheOldDay) {
    clock_.set(tests::at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 23, .minute = 59}));
    press("org.a", 7);
    clock_.advance(1min);
    press("org.b");
    EXPECT_THAT(tracker_->todayAppTotals.get(), ElementsAre(Total{"org.b", "Name of org.b", 1, false}));
    await(tracker_->flushPending());
    tasks_.beginWaiting();
    EXPECT_THAT(await(store_->fetchAppHourlyCounts(today)),
                ElementsAre(AppHourlyCountRow{today, 23, "org.a", 7}));
    EXPECT_THAT(await(store_->fetchAppHourlyCounts(tomorrow)),
                ElementsAre(AppHourlyCountRow{tomorrow, 0, "org.b", 1}));
}

TEST_F(Tracker, ForgetsOneAccountWhenItTurnsToAnother) {
    press("org.a", 2);
    await(tracker_->flushPending());
    press("org.a");
    const auto other = open("ben@example.com");
    await(other->incrementAppHourly(today, 9, "org.b", 5, 1));

    tracker_->updateStore(other);
    EXPECT_THAT(tracker_->todayAppTotals.get(), IsEmpty());
    EXPECT_THAT(tracker_->appRegistry.get(), IsEmpty());
    EXPECT_TRUE(tests::waitUntil([&] { return tracker_->todayAppTotals.get().size() == 1; }));
    EXPECT_EQ(tracker_->todayAppTotals.get().front().bundleId, "org.b");
    EXPECT_THAT(await(store_->fetchAppHourlyCounts(today)),
                ElementsAre(AppHourlyCountRow{today, 9, "org.a", 2}));

    tracker_->updateStore(nullptr);
    press("org.c");
    await(tracker_->flushPending());
    await(tracker_->refreshFromDisk());
    EXPECT_EQ(tracker_->todayAppTotals.get().size(), 1u);
}

} // namespace
} // namespace fernhollow
