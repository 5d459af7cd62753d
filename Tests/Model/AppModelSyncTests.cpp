// What the model makes of the account's other machines.

#include "SyncFixture.h"

#include <cstdint>

namespace fernhollow::tests {
namespace {

class AppModelSync : public SyncFixture {
protected:
    std::int64_t shownOn(int daysAgo) {
        const auto& points = model_->last30Days.get();
        return points.at(points.size() - 1 - static_cast<std::size_t>(daysAgo)).count;
    }

    // Both a cycle and the refresh that shows its result.
    void syncAndRefresh() {
        pass(1s);
        pass(1s);
        refresh();
        settle();
    }
};

TEST_F(AppModelSync, ShowsTheAccountsTotalUntilSomethingIsCountedHere) {
    answers_["get_account_today_total"].body = "250";
    startModel();
    syncAndRefresh();
    EXPECT_EQ(model_->todayCount.get(), 250);
    EXPECT_EQ(model_->todayCountAggregated.get(), 250);
    press(3);
    EXPECT_EQ(model_->todayCountAggregated.get(), 253);
    refresh();
    EXPECT_EQ(model_->todayCountAggregated.get(), 253);
    EXPECT_EQ(model_->todayCount.get(), 253);
    EXPECT_THAT(home_.log(), HasSubstr("[AppModel] Using remote aggregated: 250 (local was 0)\n"));
}

TEST_F(AppModelSync, ForgetsYesterdaysTotalAndSendsYesterdayOnceMore) {
    answers_["get_account_today_total"].body = "250";
    startModel();
    syncAndRefresh();
    press(7);
    settle();
    answers_["get_account_today_total"].status = 500;
    clock_.set(at("UTC", {.year = 2026, .month = 3, .day = 6}));
    refresh();
    settle();
    EXPECT_EQ(model_->todayCountAggregated.get(), 0);
    pass(1s);
    const auto last = server_.to("device_day_counts").back();
    EXPECT_EQ(last.json().at("day"), "2026-03-05");
    EXPECT_EQ(last.json().at("count"), 7);
}

TEST_F(AppModelSync, ListsTheDevicesOfTheAccountThatIsSignedIn) {
    const std::string ana =
        R"([{"device_id":"1","device_name":"Ana's","last_seen_at":"2026-03-05T08:00:00Z"}])";
    answers_["get_account_devices"].body = ana;
    startModel();
    syncAndRefresh();
    EXPECT_THAT(account_->connectedDevices.get(), SizeIs(1));

    // Ana's answer is on its way while Bea signs in; Bea's backend is down.
    const auto answer = server_.answer;
    server_.answer = [&](const Request& request) {
        if (request.json().value("p_email", "") == "ana@example.com") {
            signIn("bea@example.com");
            answers_["get_account_devices"] = {.status = 500};
            return Answer{.body = ana};
        }
        return answer(request);
    };
    clock_.advance(15s);
    settle();
    syncAndRefresh();
    EXPECT_THAT(account_->connectedDevices.get(), IsEmpty());
    EXPECT_THAT(home_.log(), HasSubstr("[CloudSync] Reset completed - all caches cleared\n"));
}

TEST_F(AppModelSync, SaysSoWhenCountsHaveWaitedTenMinutesForTheBackend) {
    answers_["device_day_counts"].status = 503;
    startModel();
    press(3);
    await(model_->flushPending());
    pass(1s);
    pass(9min);
    EXPECT_TRUE(model_->areCountsSent.get());
    pass(1min);
    EXPECT_FALSE(model_->areCountsSent.get());
    answers_.clear();
    pass(60s);
    pass(1s);
    EXPECT_TRUE(model_->areCountsSent.get());
}

} // namespace
} // namespace fernhollow::tests
