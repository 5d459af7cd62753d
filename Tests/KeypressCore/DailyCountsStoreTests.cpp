#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Support/Testing.h"

#include <sqlite3.h>

namespace fernhollow::tests {
namespace {

const DayKey monday("2026-01-05");
const DayKey tuesday("2026-01-06");

class Store : public testing::Test {
protected:
    /// Runs SQL from outside, as another process would, and gives the first column of the first row.
    std::string sql(const std::string& statement) {
        std::string answer;
        if (outside_ == nullptr) {
            sqlite3_open(file_.c_str(), &outside_);
        }
        const auto take = [](void* out, int, char** columns, char**) {
            *static_cast<std::string*>(out) = columns[0] != nullptr ? columns[0] : "NULL";
            return 0;
        };
        EXPECT_EQ(sqlite3_exec(outside_, statement.c_str(), take, &answer, nullptr), SQLITE_OK) << statement;
        return answer;
    }

    ~Store() override { sqlite3_close(outside_); }

    TemporaryHome home_;
    std::filesystem::path file_ = DailyCountsStore::urlForAccount("ana@example.com");
    std::unique_ptr<DailyCountsStore> store_ = std::make_unique<DailyCountsStore>(file_);
    sqlite3* outside_ = nullptr;
};

TEST_F(Store, AddsUpDailyCounts) {
    await(store_->increment(monday, 3, 100));
    await(store_->increment(monday, 3, 200));
    await(store_->increment(monday, 0, 300));
    await(store_->increment(monday, -5, 300));
    await(store_->increment(tuesday, 7, 300));

    EXPECT_EQ(await(store_->count(monday)), 6);
    EXPECT_EQ(await(store_->count(DayKey("2026-01-07"))), 0);
    EXPECT_EQ(sql("SELECT updated_at FROM daily_counts WHERE day = '2026-01-05'"), "200");
    EXPECT_THAT(await(store_->fetchCounts(monday, tuesday)),
                ElementsAre(DailyCountRow{monday, 6}, DailyCountRow{tuesday, 7}));
    EXPECT_THAT(await(store_->fetchCounts(tuesday, tuesday)), ElementsAre(DailyCountRow{tuesday, 7}));
    EXPECT_THAT(await(store_->fetchCounts(tuesday, monday)), IsEmpty());

    await(store_->overwrite(monday, 0, 400));
    EXPECT_EQ(sql("SELECT count FROM daily_counts WHERE day = '2026-01-05'"), "0");
}

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
    sql("CREATE TRIGGER refuse BEFORE INSERT ON hourly_counts WHEN NEW.hour = 11 "
        "BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_THROW(await(store_->replaceHourly(monday, {{10, 1}, {11, 1}}, 200)), DailyCountsStoreError);
    EXPECT_THAT(await(store_->fetchHourlyCounts(monday)), ElementsAre(HourlyCountRow{monday, 9, 4}));
    await(store_->incrementHourly(monday, 9, 1, 300)); // no transaction is left open
    EXPECT_EQ(sql("SELECT count FROM hourly_counts"), "5");
}

TEST_F(Store, CountsPerHourAndApplication) {
    await(store_->incrementAppHourly(monday, 10, "org.b", 2, 100));
    await(store_->incrementAppHourly(monday, 10, "org.b", 5, 100));
    await(store_->incrementAppHourly(monday, 10, "org.a", 1, 100));
    await(store_->incrementAppHourly(monday, 9, "org.b", 4, 100));
    for (const auto& [hour, by] : {std::pair(24, 1), std::pair(-1, 1), std::pair(3, 0)}) {
        await(store_->incrementAppHourly(monday, hour, "org.c", by, 100));
    }
    EXPECT_THAT(await(store_->fetchAppHourlyCounts(monday)),
                ElementsAre(AppHourlyCountRow{monday, 9, "org.b", 4},
                            AppHourlyCountRow{monday, 10, "org.a", 1},
                            AppHourlyCountRow{monday, 10, "org.b", 7}));
    EXPECT_THAT(await(store_->fetchAppDailyCounts(monday)),
                UnorderedElementsAre(Pair("org.a", 1), Pair("org.b", 11)));
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

TEST_F(Store, KeepsItsDataAndItsSchemaWhenOpenedAgain) {
    await(store_->increment(monday, 3, 100));
    store_.reset();
    DailyCountsStore again(file_);
    EXPECT_EQ(await(again.count(monday)), 3);
    EXPECT_EQ(sql("PRAGMA journal_mode"), "wal");
}

TEST_F(Store, WaitsOnceForALockAndThenNotForAWhile) {
    sql("BEGIN IMMEDIATE");
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 50; ++i) {
        EXPECT_THROW(await(store_->increment(monday, 1, 100)), DailyCountsStoreError);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s); // fifty waits would take 25 s
    sql("COMMIT");
    await(store_->increment(monday, 1, 100));
    EXPECT_EQ(await(store_->count(monday)), 1);
}

} // namespace
} // namespace fernhollow::tests
