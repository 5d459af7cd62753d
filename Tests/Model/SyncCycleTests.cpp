// When cycles run, what they upload, and what they leave in the caches.

#include "KeypressCore/CountLimits.h"
#include "KeypressCore/SQLiteConnection.h"
#include "Model/Sync/SyncRules.h"
#include "SyncFixture.h"

#include <cstdint>
#include <stdexcept>

namespace fernhollow::tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace std::chrono_literals;

class SyncCycle : public SyncFixture {
protected:
    void serverHas(std::int64_t count) {
        answers_["GET"].body = R"([{"count":)" + std::to_string(count) + "}]";
    }

    // While somebody types; others need not ask for anything.
    std::size_t cycles() { return server_.to("get_account_today_total").size(); }

    std::vector<std::string> hourDays() {
        std::vector<std::string> days;
        for (const auto& request : server_.to("device_hour_counts")) {
            days.push_back(request.json().at("day"));
        }
        return days;
    }
};

TEST(SyncRules, PauseLongerTheLongerNobodyTypes) {
    EXPECT_EQ(periodicPause(0s), 1s);
    EXPECT_EQ(periodicPause(29999ms), 1s);
    EXPECT_EQ(periodicPause(30s), 5s);
    EXPECT_EQ(periodicPause(60s), 15s);
    EXPECT_EQ(periodicPause(300s), 30s);
    EXPECT_EQ(periodicPause(899s), 30s);
    EXPECT_EQ(periodicPause(900s), 60s);
}

TEST(SyncRules, NeverLowerADay) {
    using Kind = DayMerge::Kind;
    constexpr auto maximum = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(DayMerge::of(0, 120), (DayMerge{Kind::restore, 120}));
    EXPECT_EQ(DayMerge::of(-1, 0), (DayMerge{Kind::restore, 0}));
    EXPECT_EQ(DayMerge::of(30, 120), (DayMerge{Kind::add, 150}));
    EXPECT_EQ(DayMerge::of(120, 30), (DayMerge{Kind::uploadLocal, 120}));
    EXPECT_EQ(DayMerge::of(120, 120), (DayMerge{Kind::uploadLocal, 120}));
    // Nobody presses that often.
    EXPECT_EQ(DayMerge::of(1, maximum), (DayMerge{Kind::uploadLocal, 1}));
    EXPECT_EQ(DayMerge::of(0, 1'000'000'000'000), (DayMerge{Kind::uploadLocal, 0}));
    EXPECT_EQ(DayMerge::of(30, maximumDeviceDay - 29), (DayMerge{Kind::uploadLocal, 30}));
}

TEST_F(SyncCycle, RunsSoonAfterAPressAndSeldomWhenIdle) {
    openStore();
    startSync();
    pass(1s);
    EXPECT_EQ(cycles(), 1);
    coordinator_->markDirty(today, 9);
    pass(999ms);
    EXPECT_EQ(cycles(), 1);
    pass(1ms);
    EXPECT_EQ(cycles(), 2);
    for (int second = 0; second < 29; ++second) {
        pass(1s);
    }
    const auto busy = cycles();
    EXPECT_GE(busy, 29);
    for (int second = 0; second < 900; second += 5) {
        pass(5s);
    }
    const auto idle = cycles();
    EXPECT_LE(idle - busy, 6 + 16 + 20 + 1);
    pass(60s);
    pass(60s);
    EXPECT_EQ(cycles(), idle + 2);
    coordinator_->notifyFlushCompleted();
    pass(1s);
    EXPECT_EQ(cycles(), idle + 3) << "what a flush made durable does not wait for the next minute";
}

TEST_F(SyncCycle, KeepsItsPaceWhateverTheWallClockDoes) {
    openStore();
    const Instant start = clock_.now();
    for (const auto jump : {0h, 24h * 365, -24h * 365}) { // the first stands still
        SCOPED_TRACE(jump.count());
        const auto setAndPass = [&](int times, std::chrono::seconds time) {
            const auto before = cycles();
            for (int i = 0; i < times; ++i) {
                clock_.set(start + jump * (i % 2));
                pass(time);
            }
            return cycles() - before;
        };
        coordinator_.reset();
        startSync();
        coordinator_->markDirty(today, 9);
        EXPECT_EQ(setAndPass(25, 1s), 25);
        setAndPass(15, 60s);
        EXPECT_EQ(setAndPass(10, 60s), 10);
    }
}

TEST_F(SyncCycle, GoesOnAfterAFailureThatNothingForesees) {
    openStore();
    answers_["get_account_devices"].body =
        R"([{"device_id":"1","device_name":"Ana's","last_seen_at":"2026-03-05T08:00:00Z"}])";
    bool isBroken = true;
    const auto observation = account_->connectedDevices.observe([&isBroken] {
        if (isBroken) {
            throw std::runtime_error("out of order");
        }
    });
    startSync();
    pass(1s);
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] A sync cycle failed: out of order\n"));
    isBroken = false;
    pass(60s);
    EXPECT_GE(cycles(), 2);
    EXPECT_EQ(account_->connectedDevices.get().size(), 1);
}

TEST_F(SyncCycle, ComesOnceASecondWhileAKeyIsHeld) {
    openStore();
    startSync();
    pass(1s);
    pass(500ms);
    const auto before = cycles();
    for (int repeat = 0; repeat < 150; ++repeat) {
        coordinator_->markDirty(today, 9);
        pass(33ms);
    }
    EXPECT_GE(cycles(), before + 4);
    EXPECT_LE(cycles(), before + 5) << "the periodic ones would be as many again";
    // The last repeat has its cycle too, however soon after the one before.
    const auto last = cycles();
    coordinator_->markDirty(today, 9);
    pass(1s);
    EXPECT_GE(cycles(), last + 1);
}

TEST_F(SyncCycle, DropsAnAttemptWhileOneIsUnderWay) {
    openStore();
    answers_["get_account_today_total"].isSilent = true;
    startSync();
    pass(1s);
    coordinator_->markDirty(tomorrow, std::nullopt);
    settle();
    pass(1s);
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] Sync already in progress, skipping\n"));
    EXPECT_EQ(server_.to("get_account_today_total").size(), 1);

    answers_["get_account_today_total"] = {.body = "5"};
    pass(60s); // the request times out, and the cycle goes on
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] Error downloading totals: the request timed out\n"));
    EXPECT_EQ(cycles(), 1);
    pass(15s);
    EXPECT_EQ(todayTotal(), 5);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(0)) << "the day that became dirty meanwhile";
}

TEST_F(SyncCycle, UploadsTheLastYearAndTheHoursThatTheBackendMayLack) {
    openStore();
    serverKeepsDays();
    serverDays_ = {{"2025-03-05", 7}, {"2025-03-06", 6}};
    // The last one was counted further east, where the next day had begun.
    for (const auto* day :
         {"2025-03-04", "2025-03-05", "2025-03-06", "2026-03-04", "2026-03-05", "2026-03-06"}) {
        await(store_->increment(DayKey(day), 7, 1));
        await(store_->incrementHourly(DayKey(day), 8, 7, 1));
    }
    startSync();
    pass(1s);
    std::vector<std::string> days;
    for (const auto& request : server_.to("device_day_counts")) {
        if (request.method == "POST") {
            days.push_back(request.json().at("day"));
        }
    }
    EXPECT_THAT(days, ElementsAre("2026-03-05", "2026-03-06", "2026-03-04", "2025-03-06", "2025-03-05"))
        << "today first";
    EXPECT_THAT(hourDays(), ElementsAre("2026-03-05", "2026-03-06", "2026-03-04", "2025-03-06"));
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] Queued 5 historical days for upload\n"));
}

TEST_F(SyncCycle, SendsThePastInPortionsThatGiveWayToToday) {
    openStore();
    serverKeepsDays();
    for (int day = 10; day < 29; ++day) {
        await(store_->increment(DayKey("2026-02-" + std::to_string(day)), day, 1));
    }
    await(store_->increment(today, 1, 1));
    startSync();
    pass(1s);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(1, 28, 27, 26, 25, 24));
    server_.answer = [this, answer = server_.answer](const Request& request) {
        if (request.method == "GET" && serverDays_.size() == 6) {
            await(store_->increment(today, 4, 1));
            coordinator_->markDirty(today, 9);
        }
        return answer(request);
    };
    pass(1s);
    pass(1s);
    EXPECT_THAT(sentCounts("device_day_counts"),
                ElementsAre(1, 28, 27, 26, 25, 24, 23, 5, 22, 21, 20, 19, 18));
    pass(1s);
    pass(1s);
    EXPECT_EQ(serverDays_.size(), 20);
}

TEST_F(SyncCycle, SendsTheHoursOfADayThatWasOfflineOverMidnight) {
    openStore();
    server_.answer = [](const Request&) { return Answer{.raw = " ", .closes = true}; };
    startSync();
    await(store_->increment(today, 7, 1));
    await(store_->incrementHourly(today, 23, 7, 1));
    coordinator_->markDirty(today, 23);
    pass(1s);
    clock_.set(at("UTC", {.year = 2026, .month = 3, .day = 6}));
    pass(60s);
    server_.requests.clear();
    server_.answer = [](const Request&) { return Answer{}; };
    pass(15s); // the network is back
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(7));
    EXPECT_THAT(hourDays(), ElementsAre("2026-03-05"));
}

// Both would add the other's sum to their own, again and again.
TEST_F(SyncCycle, NoticesAnotherMachineWithItsIdentityAndAddsNothing) {
    openStore();
    serverKeepsDays();
    serverDays_["2026-03-05"] = 100;
    await(store_->increment(today, 30, 1));
    startSync();
    pass(1s);
    EXPECT_EQ(serverDays_["2026-03-05"], 130) << "what a lost database had";
    for (const std::int64_t other : {999, 1500}) {
        serverDays_["2026-03-05"] = other;
        server_.requests.clear();
        await(store_->increment(today, 1, 1));
        coordinator_->markDirty(today, 9);
        pass(1s);
        EXPECT_EQ(serverDays_["2026-03-05"], other);
        EXPECT_THAT(server_.to("devices"), IsEmpty());
        EXPECT_THAT(server_.to("get_account_today_total"), testing::SizeIs(1));
    }
    EXPECT_EQ(await(store_->count(today)), 132);
    EXPECT_EQ(identityNotices_, 1);
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] Another machine sends counts under this machine's "
                                       "identity: the backend has 999 for 2026-03-05"));
    EXPECT_NE(coordinator_->status().unsentSince.get(), std::nullopt);
}

TEST_F(SyncCycle, UploadsThirtyDaysOfApplicationsUpToYesterday) {
    openStore();
    for (const auto* day : {"2026-02-02", "2026-02-03", "2026-03-04", "2026-03-05"}) {
        await(store_->incrementAppHourly(DayKey(day), 8, "org.a", 7, 1));
    }
    startSync();
    coordinator_->markDirty(DayKey("2026-02-02"), std::nullopt);
    pass(1s);
    std::vector<std::string> days;
    for (const auto& request : server_.to("device_app_hour_counts")) {
        days.push_back(request.json().at("day"));
    }
    EXPECT_THAT(days, ElementsAre("2026-02-03", "2026-03-04"));
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] uploadAllAppHistory completed: 2 entries uploaded\n"));
}

TEST_F(SyncCycle, SendsARowAgainOnlyWhenItChangedOrWasRefused) {
    openStore();
    const auto count = [this](const char* app) {
        await(store_->registerApp(app, "A", 1));
        await(store_->incrementAppHourly(today, 9, app, 1, 1));
    };
    const auto cycle = [this] {
        server_.requests.clear();
        coordinator_->markDirty(today, 9);
        pass(1s);
        return sentCounts("device_app_hour_counts");
    };
    count("org.a");
    count("org.b");
    startSync();
    pass(2s);
    EXPECT_THAT(cycle(), ElementsAre(1, 1));
    EXPECT_THAT(cycle(), IsEmpty());
    EXPECT_THAT(server_.to("device_app_registry"), IsEmpty());
    count("org.b");
    EXPECT_THAT(cycle(), ElementsAre(2));
    count("org.a");
    answers_["device_app_hour_counts"].status = 500;
    EXPECT_THAT(cycle(), ElementsAre(2));
    answers_.erase("device_app_hour_counts");
    EXPECT_THAT(cycle(), ElementsAre(2));
    EXPECT_THAT(cycle(), IsEmpty());
}

TEST_F(SyncCycle, SendsNothingAtAStartUntilTheBackendHasLostIt) {
    const DayKey yesterday("2026-03-04");
    const auto restart = [this] {
        coordinator_.reset();
        settle();
        store_ = std::make_shared<DailyCountsStore>(DailyCountsStore::urlForAccount("ana@example.com"),
                                                    DatabaseOpening{.device = deviceId});
        server_.requests.clear();
        startSync();
        for (int second = 0; second < 60; ++second) {
            pass(1s);
        }
    };
    const auto sent = [this] {
        std::map<std::string, std::size_t> rows;
        for (const auto* table :
             {"device_day_counts", "device_hour_counts", "device_app_hour_counts", "device_app_registry"}) {
            rows[table] = server_.to(table).size();
        }
        return rows;
    };
    const std::map<std::string, std::size_t> none = {{"device_day_counts", 0},
                                                     {"device_hour_counts", 0},
                                                     {"device_app_hour_counts", 0},
                                                     {"device_app_registry", 0}};
    serverKeepsDays();
    answers_["get_account_today_total"].body = "7";
    answers_["get_account_daily_totals"].body =
        R"([{"day":"2026-03-04","total_count":7},{"day":"2026-03-05","total_count":7}])";
    restart();
    for (const auto& day : {yesterday, today}) {
        await(store_->increment(day, 7, 1));
        await(store_->incrementHourly(day, 8, 7, 1));
        await(store_->incrementAppHourly(day, 8, "org.a", 7, 1));
    }
    await(store_->registerApp("org.a", "A", 1));
    restart();
    auto all = none;
    for (auto& [table, rows] : all) { // a day's count takes two requests
        rows = table == "device_day_counts" ? 4 : table == "device_app_registry" ? 1 : 2;
    }
    EXPECT_EQ(sent(), all);
    restart();
    EXPECT_EQ(sent(), none);
    EXPECT_LT(server_.requests.size(), 30);
    await(store_->incrementHourly(yesterday, 9, 1, 1));
    await(store_->increment(yesterday, 1, 1));
    answers_["get_account_daily_totals"].body =
        R"([{"day":"2026-03-04","total_count":8},{"day":"2026-03-05","total_count":7}])";
    restart();
    EXPECT_EQ(sentCounts("device_day_counts"), std::vector<std::int64_t>{8});
    EXPECT_EQ(sentCounts("device_hour_counts"), std::vector<std::int64_t>{1});
    answers_["get_account_daily_totals"].body = "[]";
    serverDays_.clear();
    restart();
    ++all["device_hour_counts"];
    EXPECT_EQ(sent(), all);
}

TEST_F(SyncCycle, TakesTheBackendsCountOfADayThatIsGoneHere) {
    openStore();
    await(store_->overwrite(today, 0, 1));
    serverHas(120);
    startSync();
    pass(1s);
    EXPECT_EQ(await(store_->count(today)), 120);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(120));
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] Syncing up: local (0) -> remote (120) for 2026-03-05\n"));
}

TEST_F(SyncCycle, KeepsWhatIsFlushedWhileTheBackendAnswers) {
    openStore();
    await(store_->increment(today, 30, 1));
    serverHas(120);
    const auto answer = server_.answer;
    server_.answer = [&](const Request& request) {
        if (request.method == "GET") {
            await(store_->increment(today, 5, 1));
        }
        return answer(request);
    };
    startSync();
    pass(1s);
    EXPECT_EQ(await(store_->count(today)), 155);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(150));
    EXPECT_THAT(home_.log(),
                HasSubstr("[CloudSync] Merging: remote (120) + local (30) = 150 for 2026-03-05\n"));
}

// Sent all the same, the sum would grow by the local count with each cycle.
TEST_F(SyncCycle, SendsNoSumThatTheStoreDoesNotTake) {
    openStore();
    await(store_->increment(today, 30, 1));
    serverHas(120);
    startSync();
    store_->setPatience(0ms);
    SQLiteConnection other(store_->url());
    other.exec("BEGIN IMMEDIATE");
    pass(1s);
    EXPECT_THAT(sentCounts("device_day_counts"), IsEmpty());
    other.exec("ROLLBACK");
    pass(1s); // the next cycle tries again
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(150));
}

TEST_F(SyncCycle, ReplacesACacheWholeAndKeepsItAtAFailure) {
    openStore();
    answers_["get_account_today_total"].body = "250";
    answers_["get_account_daily_totals"].body = R"([{"day":"2026-03-04T00:00:00","total_count":"55"}])";
    answers_["get_account_hourly_totals"].body = R"([{"hour":7,"total_count":1},{"hour":8,"total_count":2}])";
    answers_["get_account_app_hourly_totals"].body =
        R"([{"hour":7,"bundle_id":"a","app_name":"A","total_count":3}])";
    answers_["get_account_app_daily_totals"].body =
        R"([{"day":"2026-03-04","bundle_id":"a","app_name":"A","total_count":4}])";
    startSync();
    pass(1s);
    const auto expectCaches = [this] {
        EXPECT_EQ(todayTotal(), 250);
        EXPECT_EQ(*await(coordinator_->getAggregatedHistory()), (HistoryCache{{"2026-03-04", 55}}));
        EXPECT_EQ(*await(coordinator_->getAggregatedHourly()), (HourlyCache{{7, 1}, {8, 2}}));
        EXPECT_EQ(await(coordinator_->getAggregatedAppHourly())->at(7).at("a").count, 3);
        EXPECT_EQ(await(coordinator_->getAggregatedAppDaily())->at("2026-03-04").at("a").count, 4);
    };
    const auto fetchAll = [this] { // what may have changed unnoticed, one list a cycle
        pass(15min);
        for (int cycle = 0; cycle < 8; ++cycle) {
            pass(61s); // a backend that had trouble is left alone for a minute
        }
    };
    expectCaches();
    EXPECT_THAT(home_.log(),
                HasSubstr("[CloudSync] Downloaded app daily: 1 entries, 1 days, 1 unique apps\n"));
    for (const Answer& bad : {Answer{.status = 500, .body = std::string(2000, 'x')}, Answer{.status = 300},
                              Answer{.body = "<html>sign in to this network</html>"}}) {
        for (auto& [name, answer] : answers_) {
            answer = bad;
        }
        fetchAll();
        expectCaches();
    }
    EXPECT_THAT(home_.log(), HasSubstr("with status 500: " + std::string(500, 'x') + "\n"));
    EXPECT_THAT(home_.log(), HasSubstr("decode history. Response: <html>sign in to this network</html>\n"));
    for (auto& [name, answer] : answers_) {
        answer = {.status = 299, .body = "[]"};
    }
    fetchAll();
    EXPECT_EQ(todayTotal(), 250);
    EXPECT_THAT(*await(coordinator_->getAggregatedHourly()), IsEmpty());
    EXPECT_THAT(*await(coordinator_->getAggregatedAppDaily()), IsEmpty());
}

TEST_F(SyncCycle, BelongsToTheDayOnWhichItAsked) {
    openStore();
    answers_["get_account_today_total"].body = "250";
    answers_["get_account_daily_totals"].body = R"([{"day":"2026-03-04","total_count":55}])";
    startSync();
    pass(1s);
    const auto answer = server_.answer;
    server_.answer = [&](const Request& request) {
        if (request.path.ends_with("get_account_today_total") && request.json().at("p_day") == "2026-03-05") {
            clock_.set(at("UTC", {.year = 2026, .month = 3, .day = 6})); // midnight, and the answer is late
            coordinator_->forceResetTodayCaches();
        }
        return answer(request);
    };
    coordinator_->markDirty(today, 9);
    pass(1s);
    EXPECT_EQ(todayTotal(), 0) << "of yesterday";
    EXPECT_EQ(await(coordinator_->getAggregatedHistory())->at("2026-03-04"), 55);
    pass(60s);
    EXPECT_EQ(server_.to("get_account_today_total").back().json().at("p_day"), "2026-03-06");
    EXPECT_EQ(todayTotal(), 250);
}

TEST_F(SyncCycle, EmptiesTheCachesOfTodayAtTheFirstCycleOfADay) {
    openStore();
    answers_["get_account_today_total"].body = "250";
    startSync();
    pass(1s);
    clock_.set(at("UTC", {.year = 2026, .month = 3, .day = 6}));
    answers_["get_account_today_total"].status = 500;
    pass(1s);
    EXPECT_EQ(todayTotal(), 0);
    EXPECT_THAT(home_.log(),
                HasSubstr("[CloudSync] Day changed from 2026-03-05 to 2026-03-06, resetting today caches\n"));
}

TEST_F(SyncCycle, AsksNothingWhileNobodyIsSignedIn) {
    openStore();
    await(store_->increment(today, 3, 1));
    const auto coordinator = makeCoordinator(store_);
    account_->signOut();
    settle();
    pass(1s);
    EXPECT_THAT(await(coordinator->getConnectedDevices()), IsEmpty());
    EXPECT_THAT(server_.requests, IsEmpty());
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] No email available\n"));
    signIn("ana@example.com");
    pass(1s);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(3)) << "still dirty";
}

} // namespace
} // namespace fernhollow::tests
