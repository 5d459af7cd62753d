#include "Backend/RunningBackend.h"

namespace fernhollow::backend::tests {

namespace {

// Whatever a keyboard can put into an address has to arrive as it was typed.
constexpr auto address = "ana+b&c%d é@x.example";
constexpr auto encodedAddress = "ana%2Bb%26c%25d%20%C3%A9%40x.example";
constexpr auto time = "2026-03-05T14:07:09Z";

class WireContract : public testing::Test {
protected:
    void write(int count, const std::string& device) {
        const json day = {{"customer_email", address},
                          {"device_id", device},
                          {"day", "2026-03-05"},
                          {"count", count},
                          {"updated_at", time}};
        auto hour = day;
        hour["hour"] = 14;
        auto application = hour;
        application["bundle_id"] = "org.example.Editor";
        const std::string key = "customer_email,device_id,day";
        expectCreated(backend.upsert("device_day_counts", key, day));
        expectCreated(backend.upsert("device_hour_counts", key + ",hour", hour));
        expectCreated(backend.upsert("device_app_hour_counts", key + ",hour,bundle_id", application));
        expectCreated(backend.upsert("device_app_registry", "customer_email,bundle_id",
                                     {{"customer_email", address},
                                      {"bundle_id", "org.example.Editor"},
                                      {"app_name", "Éditeur"},
                                      {"is_hidden", false},
                                      {"updated_at", time}}));
        expectCreated(backend.upsert("devices", "customer_email,device_id",
                                     {{"customer_email", address},
                                      {"device_id", device},
                                      {"device_name", "Ana's laptop"},
                                      {"last_seen_at", time}}));
    }

    static void expectCreated(const httplib::Result& answer) {
        EXPECT_EQ(answer->status, 201) << answer->body;
        EXPECT_EQ(answer->body, "");
    }

    RunningBackend backend;
};

} // namespace

TEST_F(WireContract, AnswersTheTwelveRequestsOfAClient) {
    write(10, "first");
    write(42, "first"); // replaces the row
    write(100, "second");

    const std::string filters = "customer_email=eq." + std::string(encodedAddress) + "&device_id=eq.first";
    EXPECT_EQ(backend.get("device_day_counts?" + filters + "&day=eq.2026-03-05&select=count")->body,
              R"([{"count":42}])");
    EXPECT_EQ(backend.get("device_day_counts?" + filters + "&day=eq.2026-03-06&select=count")->body, "[]");

    const json oneDay = {{"p_email", address}, {"p_day", "2026-03-05"}};
    const json thirtyDays = {{"p_email", address}, {"p_days", 30}, {"p_end_day", "2026-03-05"}};
    const json editor = {{"bundle_id", "org.example.Editor"}, {"app_name", "Éditeur"}, {"total_count", 142}};
    auto editorByHour = editor;
    editorByHour["hour"] = 14;
    auto editorByDay = editor;
    editorByDay["day"] = "2026-03-05";
    EXPECT_EQ(backend.call("get_account_today_total", oneDay), json(142));
    EXPECT_EQ(backend.call("get_account_daily_totals", thirtyDays),
              json::parse(R"([{"day": "2026-03-05", "total_count": 142}])"));
    EXPECT_EQ(backend.call("get_account_hourly_totals", oneDay),
              json::parse(R"([{"hour": 14, "total_count": 142}])"));
    EXPECT_EQ(backend.call("get_account_app_hourly_totals", oneDay), json::array({editorByHour}));
    EXPECT_EQ(backend.call("get_account_app_daily_totals", thirtyDays), json::array({editorByDay}));
    const auto devices = backend.call("get_account_devices", {{"p_email", address}});
    ASSERT_EQ(devices.size(), 2U);
    EXPECT_EQ(devices[0]["device_name"], "Ana's laptop");
    EXPECT_EQ(devices[0]["last_seen_at"], time);
}

TEST_F(WireContract, TellsAPlusFromABlankInAQuery) {
    const auto write = [&](const char* account, int count) {
        expectCreated(backend.upsert("device_day_counts", "customer_email,device_id,day",
                                     {{"customer_email", account},
                                      {"device_id", "d"},
                                      {"day", "2026-03-05"},
                                      {"count", count},
                                      {"updated_at", time}}));
    };
    write("a+b@x.example", 1);
    write("a b@x.example", 2);
    const auto read = [&](const std::string& account) {
        return backend
            .get("device_day_counts?customer_email=eq." + account +
                 "&device_id=eq.d&day=eq.2026-03-05&select=count")
            ->body;
    };
    EXPECT_EQ(read("a%2Bb@x.example"), R"([{"count":1}])");
    EXPECT_EQ(read("a+b@x.example"), R"([{"count":2}])");
    EXPECT_EQ(read("a%20b%40x.example"), R"([{"count":2}])");
}

TEST_F(WireContract, GivesAnonymousClientsNothingElse) {
    write(7, "third");
    for (const auto* table :
         {"device_hour_counts", "device_app_hour_counts", "device_app_registry", "devices"}) {
        const auto body = backend.get(std::string(table) + "?customer_email=eq." + encodedAddress)->body;
        EXPECT_THAT(body, testing::Not(testing::HasSubstr("ana"))) << table;
    }
    EXPECT_THAT(backend.get("device_day_counts?select=customer_email,count")->body,
                testing::Not(testing::HasSubstr("ana")));
    EXPECT_EQ(backend.client().Delete("/rest/v1/devices?device_id=eq.third", clientHeaders())->status, 405);
    EXPECT_EQ(backend.client().Patch("/rest/v1/devices", clientHeaders(), "{}", "application/json")->status,
              405);
}

} // namespace fernhollow::backend::tests
