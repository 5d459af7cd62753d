#include "KeypressCore/DailyCountsStore.h"
#include "Model/AppTracker.h"
#include "Support/ApplicationIdentity.h"
#include "Support/TaskScope.h"
#include "Support/Testing.h"

namespace fernhollow::tests {
namespace {

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

    TemporaryHome home_;
    EnvironmentGuard zone_{"TZ", "UTC"};
    FakeClock clock_{at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 9, .minute = 59})};
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

TEST_F(Tracker, FlushesItsBufferOnceAndShowsItWithWhatComesAfterwards) {
    press("org.a", 3);
    press("org.b", 3);
    await(tracker_->flushPending());
    await(tracker_->flushPending());
    EXPECT_THAT(
        await(store_->fetchAppHourlyCounts(today)),
        ElementsAre(AppHourlyCountRow{today, 9, "org.a", 3}, AppHourlyCountRow{today, 9, "org.b", 3}));
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

} // namespace
} // namespace fernhollow::tests
