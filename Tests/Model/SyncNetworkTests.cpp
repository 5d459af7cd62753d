// What a network does to the engine.

#include "SyncFixture.h"

namespace fernhollow::tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using namespace std::chrono_literals;

struct Trouble {
    const char* name;
    RecordingServer::Answer answer;
};

class SyncNetwork : public SyncFixture {};

TEST_F(SyncNetwork, GoesOnAfterEveryKindOfAnswer) {
    openStore();
    await(store_->increment(today, 3, 1));
    startSync();
    std::string flood;
    flood.resize(10'000'000, 'x');
    const Trouble troubles[] = {
        {"too many requests", {.status = 429}},
        {"server error", {.status = 500, .body = "{}"}},
        {"unauthorised", {.raw = "HTTP/1.1 401 -\r\nWWW-Authenticate: Basic\r\nContent-Length: 0\r\n\r\n"}},
        {"redirected", {.raw = "HTTP/1.1 302 -\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n"}},
        {"half an answer", {.raw = "HTTP/1.1 200 -\r\nContent-Length: 9\r\n\r\n[", .closes = true}},
        {"half a header", {.raw = "HTTP/1.1 200", .closes = true}},
        {"no protocol", {.raw = "SSH-2.0-x\r\n", .closes = true}},
        {"hung up", {.raw = " ", .closes = true}},
        {"a page", {.body = "<html></html>"}},
        {"a flood", {.raw = "HTTP/1.1 200 -\r\nContent-Length: 10000000\r\n\r\n" + flood}},
    };
    for (const auto& trouble : troubles) {
        SCOPED_TRACE(trouble.name);
        const auto requests = server_.requests.size();
        server_.answer = [&trouble](const Request&) { return trouble.answer; };
        coordinator_->markDirty(today, 9);
        pass(61s); // no pause is longer
        EXPECT_GT(server_.requests.size(), requests);
        EXPECT_THAT(server_.to("elsewhere"), IsEmpty());
    }
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] Error downloading totals: the answer is too large\n"));
    EXPECT_THAT(home_.log(), Not(HasSubstr("xxxxx")));
    EXPECT_EQ(await(store_->count(today)), 3);

    server_.answer = [](const Request&) { return Answer{.body = "7"}; };
    coordinator_->markDirty(today, 9);
    pass(61s);
    EXPECT_EQ(todayTotal(), 7);
}

TEST_F(SyncNetwork, GoesOnWhereNobodyListens) {
    openStore();
    for (int hour = 0; hour < 24; ++hour) {
        await(store_->incrementAppHourly(DayKey("2026-03-04"), hour, "org.a", 7, 1));
    }
    coordinator_ = std::make_shared<CloudSyncCoordinator>(
        SyncSurroundings{clock_, executor_, executor_, session_}, store_, *account_, deviceId,
        SupabaseConfig{"http://127.0.0.1:1", "key"});
    pass(1s);
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] Error downloading totals: Connection refused\n"));
    EXPECT_THAT(await(coordinator_->getConnectedDevices()), IsEmpty());
    const std::string log = home_.log();
    const std::string line = "[CloudSync] Error uploading app hour count: Connection refused\n";
    EXPECT_THAT(log, HasSubstr(line));
    EXPECT_EQ(log.find(line, log.find(line, log.find(line, log.find(line) + 1) + 1) + 1), std::string::npos)
        << "more than three of the rows were tried";
}

TEST_F(SyncNetwork, SendsYesterdaysApplicationsFromAZoneWhereItIsToday) {
    openStore();
    await(store_->registerApp("org.a", "A", 1));
    await(store_->incrementAppHourly(DayKey("2026-03-04"), 8, "org.a", 7, 1));
    answers_["device_app_registry"].status = 503; // which goes first
    startSync();
    pass(1s);
    EXPECT_THAT(server_.to("device_app_hour_counts"), IsEmpty());
    const EnvironmentGuard zone("TZ", "Pacific/Pago_Pago");
    answers_.clear();
    pass(61s);
    EXPECT_THAT(sentCounts("device_app_hour_counts"), ElementsAre(7));
}

TEST_F(SyncNetwork, SendsADayAgainOnceTheBackendAnswersAgain) {
    openStore();
    await(store_->increment(DayKey("2026-03-04"), 40, 1));
    answers_["device_day_counts"] = {.status = 503, .body = "{}"};
    startSync();
    pass(1s);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(40));
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] Failed to upsert day count: HTTP 503 - {}\n"));
    answers_.clear();
    pass(1s); // the upload that failed is tried again
    pass(1s); // and that was the last time
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(40, 40));

    answers_["device_day_counts"] = {.status = 400};
    await(store_->increment(DayKey("2026-03-04"), 1, 1));
    coordinator_->markDirty(DayKey("2026-03-04"), std::nullopt);
    pass(1s);
    answers_.clear();
    pass(1s);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(40, 40, 41)) << "a refusal is final";
}

TEST_F(SyncNetwork, SendsOnlyTheRowsAgainThatWereLost) {
    openStore();
    await(store_->increment(today, 6, 1));
    for (const int hour : {7, 8, 9}) {
        await(store_->incrementHourly(today, hour, hour, 1));
    }
    server_.answer = [this](const Request& request) {
        const bool isFirstEight =
            server_.to("device_hour_counts").size() == 2 && request.path.ends_with("device_hour_counts");
        return Answer{.status = isFirstEight ? 503 : 200};
    };
    startSync();
    pass(1s);
    EXPECT_THAT(sentCounts("device_hour_counts"), ElementsAre(7, 8));
    pass(1s);
    EXPECT_THAT(sentCounts("device_hour_counts"), ElementsAre(7, 8, 8, 9));
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(6));
}

TEST_F(SyncNetwork, AsksNothingOfABackendThatWantsToBeLeftAlone) {
    openStore();
    await(store_->increment(today, 3, 1));
    server_.answer = [](const Request&) {
        return Answer{.raw = "HTTP/1.1 429 -\r\nRetry-After: 30\r\nContent-Length: 0\r\n\r\n"};
    };
    startSync();
    pass(1s);
    EXPECT_EQ(server_.requests.size(), 1);
    for (int second = 0; second < 29; ++second) {
        coordinator_->markDirty(today, 9);
        await(coordinator_->getConnectedDevices());
        pass(1s);
    }
    EXPECT_EQ(server_.requests.size(), 1);
    server_.answer = [](const Request&) { return Answer{}; };
    pass(1s);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(3));
}

TEST_F(SyncNetwork, EndsTheUploadsOfACycleAtTheFirstThatIsUnauthorised) {
    openStore();
    for (const auto* day : {"2026-03-02", "2026-03-03", "2026-03-04"}) {
        await(store_->increment(DayKey(day), 3, 1));
    }
    answers_["device_day_counts"].status = 401;
    startSync();
    pass(1s);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(3));
    EXPECT_EQ(server_.to("get_account_app_daily_totals").size(), 1) << "the cycle goes on";
    answers_.clear();
    pass(1s);
    EXPECT_EQ(sentCounts("device_day_counts").size(), 4);
}

TEST_F(SyncNetwork, SendsNothingOfOneAccountForAnother) {
    openStore();
    await(store_->increment(DayKey("2026-03-04"), 4, 1));
    await(store_->increment(today, 3, 1));
    server_.answer = [this](const Request& request) {
        if (request.method == "GET") {
            signIn("bea@example.com");
        }
        return Answer{};
    };
    startSync();
    pass(1s);
    pass(60s);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(3)) << "the one that was on its way";
    EXPECT_EQ(server_.requests.size(), 2);
    for (const auto& request : server_.requests) {
        EXPECT_THAT(request.query + request.body, HasSubstr("ana"));
    }
}

TEST_F(SyncNetwork, TellsSinceWhenCountsWaitThatCouldNotBeSent) {
    openStore();
    await(store_->increment(today, 3, 1));
    answers_["device_day_counts"].status = 503;
    startSync();
    const auto& since = coordinator_->status().unsentSince;
    EXPECT_EQ(since.get(), std::nullopt);
    pass(1s);
    const auto first = clock_.monotonic();
    EXPECT_EQ(since.get(), first);
    clock_.set(clock_.now() + 24h * 365);
    pass(600s);
    EXPECT_EQ(since.get(), first);
    EXPECT_EQ(clock_.monotonic() - first, 600s);
    answers_.clear();
    pass(60s);
    pass(60s);
    EXPECT_EQ(since.get(), std::nullopt);
}

// Taken for nothing, the server's larger count would be replaced.
TEST_F(SyncNetwork, SendsNoDayOfWhichItCouldNotLearnTheServersCount) {
    openStore();
    await(store_->increment(today, 30, 1));
    startSync();
    for (const int status : {200, 302, 400, 401, 404, 500}) {
        answers_["GET"] = {.status = status, .body = "<html></html>"};
        const auto asked = server_.to("device_day_counts").size();
        pass(61s);
        EXPECT_GT(server_.to("device_day_counts").size(), asked) << status;
    }
    EXPECT_THAT(sentCounts("device_day_counts"), IsEmpty());
    answers_["GET"] = {.body = R"([{"count":120}])"};
    pass(61s);
    EXPECT_THAT(sentCounts("device_day_counts"), ElementsAre(150));
}

TEST_F(SyncNetwork, LogsWhatChangedAndNoLineThatAServerMadeUp) {
    openStore();
    answers_["get_account_today_total"].body = "250";
    startSync();
    pass(1s);
    const std::string start = home_.log();
    for (int second = 0; second < 20; ++second) {
        coordinator_->markDirty(today, 9);
        pass(1s);
    }
    EXPECT_LT(home_.log().size(), start.size() + 500) << home_.log();

    const std::string forged = "x\n[2026-03-05T09:00:00Z] [AccountManager] Signed out";
    answers_["get_account_daily_totals"].body = forged;
    answers_["device_day_counts"] = {.status = 400, .body = forged};
    pass(15min);
    for (int minute = 0; minute < 4; ++minute) { // the history is fetched again once in a while
        pass(60s);
    }
    EXPECT_THAT(home_.log(), HasSubstr("Failed to decode history. Response: x "));
    EXPECT_THAT(home_.log(), Not(HasSubstr("\n[2026-03-05T09:00:00Z] [AccountManager] Signed out")));
    answers_.clear();
    const auto cycle = [this](Answer answer) {
        server_.answer = [answer](const Request&) { return answer; };
        coordinator_->markDirty(today, 9);
        pass(1s);
    };
    const Answer outage{.raw = " ", .closes = true};
    cycle(outage);
    cycle({});
    const auto before = home_.log();
    cycle(outage);
    EXPECT_THAT(home_.log().substr(before.size()), HasSubstr("Error downloading totals: "))
        << "another outage is news";
}

TEST_F(SyncNetwork, BreaksOffWhatHangsWhenItIsGivenUp) {
    openStore();
    server_.answer = [](const Request&) { return Answer{.isSilent = true}; };
    startSync();
    pass(1s);
    auto devices = coordinator_->getConnectedDevices();
    settle();
    coordinator_.reset();
    EXPECT_TRUE(waitUntil([this] { return executor_.underWay() == 0; }));
    EXPECT_THAT(await(std::move(devices)), IsEmpty());
    EXPECT_EQ(clock_.sleepers(), 0);
    EXPECT_THAT(home_.log(), Not(HasSubstr("[CloudSync] Error")));
}

} // namespace
} // namespace fernhollow::tests
