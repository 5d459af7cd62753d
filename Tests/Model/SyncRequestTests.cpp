// What goes over the wire, request by request.

#include "SyncFixture.h"

namespace fernhollow::tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Json = nlohmann::json;
using namespace std::chrono_literals;

class SyncRequests : public SyncFixture {
protected:
    std::vector<std::string> steps() {
        std::vector<std::string> steps;
        for (const auto& request : server_.requests) {
            steps.push_back(request.method + " " + request.path + (request.query.empty() ? "" : "?") +
                            request.query);
        }
        return steps;
    }

    // What the toolkit adds on the way is not ours.
    static std::vector<std::pair<std::string, std::string>> ownHeaders(const Request& request) {
        std::vector<std::pair<std::string, std::string>> headers;
        for (const auto& header : request.headers) {
            static const std::vector<std::string> transport = {
                "host", "connection", "user-agent", "accept-encoding", "accept-language", "content-length"};
            if (std::find(transport.begin(), transport.end(), header.first) == transport.end()) {
                headers.push_back(header);
            }
        }
        return headers;
    }
};

TEST_F(SyncRequests, OfACycleFollowEachOtherInTheirOrder) {
    openStore();
    await(store_->increment(today, 12, 1));
    await(store_->incrementHourly(today, 9, 12, 1));
    await(store_->incrementAppHourly(today, 9, "org.a", 12, 1));
    startSync();
    await(store_->registerApp("org.a", "A", 1)); // after the history per application has sent the others
    pass(1s);

    const std::string filter =
        "customer_email=eq.ana%40example.com&device_id=eq." + deviceId + "&day=eq.2026-03-05&select=count";
    EXPECT_THAT(
        steps(),
        ElementsAre(
            "GET /rest/v1/device_day_counts?" + filter,
            "POST /rest/v1/device_day_counts?on_conflict=customer_email,device_id,day",
            "POST /rest/v1/device_hour_counts?on_conflict=customer_email,device_id,day,hour",
            "POST /rest/v1/rpc/get_account_today_total", "POST /rest/v1/rpc/get_account_daily_totals",
            "POST /rest/v1/rpc/get_account_hourly_totals",
            "POST /rest/v1/device_app_hour_counts?on_conflict=customer_email,device_id,day,hour,bundle_id",
            "POST /rest/v1/device_app_registry?on_conflict=customer_email,bundle_id",
            "POST /rest/v1/rpc/get_account_app_hourly_totals",
            "POST /rest/v1/rpc/get_account_app_daily_totals",
            "POST /rest/v1/devices?on_conflict=customer_email,device_id",
            "POST /rest/v1/rpc/get_account_devices"));
    const std::string now = "2026-03-05T09:00:01Z";
    const Json key = {{"customer_email", "ana@example.com"}, {"device_id", deviceId}, {"updated_at", now}};
    const auto with = [](Json body, const Json& more) {
        body.update(more);
        return body;
    };
    const Json days = {{"p_email", "ana@example.com"}, {"p_days", 30}, {"p_end_day", "2026-03-05"}};
    const Json day = {{"p_email", "ana@example.com"}, {"p_day", "2026-03-05"}};
    std::vector<Json> bodies;
    for (const auto& request : server_.requests) {
        bodies.push_back(request.method == "GET" ? Json() : request.json());
    }
    const std::string name = bodies.at(10).value("device_name", "");
    EXPECT_FALSE(name.empty());
    EXPECT_THAT(
        bodies,
        ElementsAre(Json(), with(key, {{"day", "2026-03-05"}, {"count", 12}}),
                    with(key, {{"day", "2026-03-05"}, {"hour", 9}, {"count", 12}}), day, days, day,
                    with(key, {{"day", "2026-03-05"}, {"hour", 9}, {"bundle_id", "org.a"}, {"count", 12}}),
                    Json({{"customer_email", "ana@example.com"},
                          {"bundle_id", "org.a"},
                          {"app_name", "A"},
                          {"is_hidden", false},
                          {"updated_at", now}}),
                    day, days,
                    Json({{"customer_email", "ana@example.com"},
                          {"device_id", deviceId},
                          {"device_name", name},
                          {"last_seen_at", now}}),
                    Json({{"p_email", "ana@example.com"}})));
}

TEST_F(SyncRequests, CarryTheirHeadersInOrderOverOneConnection) {
    openStore();
    await(store_->increment(today, 1, 1));
    startSync();
    pass(1s);
    const std::vector<std::pair<std::string, std::string>> headers = {
        {"content-type", "application/json"},
        {"apikey", "the.anon.key"},
        {"authorization", "Bearer the.anon.key"}};
    auto written = headers;
    written.emplace_back("prefer", "resolution=merge-duplicates");
    EXPECT_EQ(ownHeaders(server_.to("device_day_counts").at(0)), headers);
    EXPECT_EQ(ownHeaders(server_.to("device_day_counts").at(1)), written);
    EXPECT_EQ(ownHeaders(server_.to("devices").at(0)), written);
    EXPECT_EQ(ownHeaders(server_.to("get_account_devices").at(0)), headers);
    EXPECT_EQ(server_.connections(), 1);
}

TEST_F(SyncRequests, CarryAnyAddressAsItWasTyped) {
    const std::string email = "ana+b&c=%41 d\xC3\xA9#?/;,\"\\@ex\xC3\xA4mple.com";
    signIn(email);
    openStore();
    await(store_->increment(today, 1, 1));
    startSync();
    pass(1s);
    const auto select = server_.to("device_day_counts").at(0);
    EXPECT_THAT(select.query, AllOf(Not(HasSubstr("+")), HasSubstr("eq.ana%2Bb%26c%3D%2541%20d")));
    EXPECT_EQ(QUrlQuery(QString::fromStdString(select.query))
                  .queryItemValue(QStringLiteral("customer_email"), QUrl::FullyDecoded)
                  .toStdString(),
              "eq." + email);
    EXPECT_EQ(server_.to("device_day_counts").at(1).json().at("customer_email"), email);
}

// One such name must not keep the other applications from the backend.
TEST_F(SyncRequests, LeaveOutANameThatIsNoText) {
    openStore();
    await(store_->registerApp("org.a", "broken \xFF", 1));
    await(store_->registerApp("org.b", "whole", 1));
    startSync();
    ASSERT_EQ(server_.to("device_app_registry").size(), 1);
    EXPECT_EQ(server_.to("device_app_registry").at(0).json().at("bundle_id"), "org.b");
}

} // namespace
} // namespace fernhollow::tests
