#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "KeypressCore/SQLiteConnection.h"
#include "Support/Testing.h"

namespace fernhollow::tests {
namespace {

const DayKey monday("2026-01-05");

class Store : public testing::Test {
protected:
    TemporaryHome home_;
    std::filesystem::path file_ = DailyCountsStore::urlForAccount("ana@example.com");
    std::unique_ptr<DailyCountsStore> store_ = std::make_unique<DailyCountsStore>(file_);
    SQLiteConnection outside_{file_}; ///< another process's
};

TEST_F(Store, AddsUpAndReplacesHourlyCounts) {
    for (const int hour : {-1, 0, 23, 24, 23}) {
        await(store_->incrementHourly(monday, hour, 2, 100));
    }
    await(store_->incrementHourly(monday, 5, 0, 100));
    EXPECT_THAT(await(store_->fetchHourlyCounts(monday)),
                ElementsAre(HourlyCountRow{monday, 0, 2}, HourlyCountRow{monday, 23, 4}));

    await(store_->replaceHourly(monday, {{9, 0}, {10, 5}, {24, 1}, {-1, 1}}, 200));
    EXPECT_THAT(await(store_->fetchHourlyCounts(monday)),
                ElementsAre(HourlyCountRow{monday, 9, 0}, HourlyCountRow{monday, 10, 5}));
    await(store_->replaceHourly(monday, {}, 300));
    EXPECT_THAT(await(store_->fetchHourlyCounts(monday)), IsEmpty());
}

TEST_F(Store, KeepsTheOldHoursWhenAReplacementFails) {
    await(store_->incrementHourly(monday, 9, 4, 100));
    outside_.exec("CREATE TRIGGER refuse BEFORE INSERT ON hourly_counts WHEN NEW.hour = 11 "
                  "BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_THROW(await(store_->replaceHourly(monday, {{10, 1}, {11, 1}}, 200)), DailyCountsStoreError);
    EXPECT_THAT(await(store_->fetchHourlyCounts(monday)), ElementsAre(HourlyCountRow{monday, 9, 4}));
    await(store_->incrementHourly(monday, 9, 1, 300)); // no transaction is left open
    EXPECT_THAT(await(store_->fetchHourlyCounts(monday)), ElementsAre(HourlyCountRow{monday, 9, 5}));
}

TEST_F(Store, RemembersApplications) {
    await(store_->registerApp("org.alpha", "alpha", 100));
    await(store_->registerApp("org.zed", "Zed", 100));
    await(store_->setAppHidden("org.zed", true));
    await(store_->registerApp("org.zed", "Zed 2", 999));
    await(store_->setAppHidden("org.unknown", true));

    EXPECT_THAT(await(store_->fetchAppRegistry()),
                ElementsAre(AppRegistryRow{"org.zed", "Zed 2", 100, true},
                            AppRegistryRow{"org.alpha", "alpha", 100, false}));
    EXPECT_EQ(await(store_->getAppName("org.alpha")), "alpha");
    EXPECT_EQ(await(store_->getAppName("org.unknown")), std::nullopt);
}

TEST_F(Store, WaitsOnceForALockAndThenNotForAWhile) {
    outside_.exec("BEGIN IMMEDIATE");
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 50; ++i) {
        EXPECT_THROW(await(store_->increment(monday, 1, 100)), DailyCountsStoreError);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s); // fifty waits would take 25 s
    outside_.exec("COMMIT");
    await(store_->increment(monday, 1, 100));
    EXPECT_EQ(await(store_->count(monday)), 1);
}

} // namespace
} // namespace fernhollow::tests
