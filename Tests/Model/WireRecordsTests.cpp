#include "Model/DeviceInfo.h"
#include "Model/Sync/RemoteCaches.h"
#include "Model/Sync/WireRecords.h"
#include "Support/Testing.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace fernhollow::tests {
namespace {

struct TotalCount {
    const char* written;
    std::int64_t read;
};

TEST(WireRecords, ReadTotalsFromNumbersAndTexts) {
    constexpr TotalCount cases[] = {
        {R"(, "total_count": 123)", 123}, {R"(, "total_count": "123")", 123},
        {R"(, "total_count": "-5")", -5}, {R"(, "total_count": "9223372036854775808")", 0},
        {R"(, "total_count": null)", 0},  {R"(, "total_count": " 1")", 0},
        {R"(, "total_count": 1.5)", 0},   {"", 0}};
    for (const auto& [written, read] : cases) {
        const auto rows = wire::decodeHours(R"([{"hour": 7)" + std::string(written) + "}]");
        ASSERT_TRUE(rows) << written;
        EXPECT_EQ(rows->at(0).total_count, read) << written;
    }
}

TEST(WireRecords, RefusesAnAnswerOfWhichOneRecordIsIncomplete) {
    const std::string good = R"({"day": "2026-03-05", "bundle_id": "a", "app_name": "A", "total_count": 1})";
    EXPECT_TRUE(wire::decodeAppDaily("[" + good + "]"));
    for (const auto* bad :
         {R"({"bundle_id": "a", "app_name": "A"})", R"({"day": 5, "bundle_id": "a", "app_name": "A"})",
          R"({"day": "2026-03-05", "bundle_id": "a", "app_name": null})", "null", "[]"}) {
        EXPECT_FALSE(wire::decodeAppDaily("[" + good + "," + bad + "]")) << bad;
    }
    EXPECT_FALSE(wire::decodeHours(R"([{"hour": "7", "total_count": 1}])"));
    EXPECT_FALSE(wire::decodeDevices(R"([{"device_id": "d", "device_name": "n"}])"));
    EXPECT_FALSE(wire::decodeDeviceCounts(R"([{"count": "12"}])"));
    EXPECT_TRUE(wire::decodeDeviceCounts("[]")->empty());
}

TEST(WireRecords, TakesOneBareWholeNumberAsTheTodayTotal) {
    EXPECT_EQ(wire::decodeTotal("9007199254740993"), 9007199254740993);
    for (const auto* bad : {"", "null", "\"5\"", "[5]", "18446744073709551615", "<html>", "{\"a\":"}) {
        EXPECT_FALSE(wire::decodeTotal(bad)) << bad;
    }
}

// A million brackets would become a million nested values.
TEST(WireRecords, RefusesDepth) {
    EXPECT_FALSE(wire::decodeDaily(std::string(1'000'000, '[')));
    const auto rows = wire::decodeDaily(R"([{"day":"[[[[[[[[[[ \" [[[[[[[[[[ \\","total_count":1}])");
    ASSERT_TRUE(rows) << "brackets in texts nest nothing";
    EXPECT_EQ(rows->at(0).total_count, 1);
}

TEST(RemoteCaches, KeepTheLastOfTheRowsOfADay) {
    EXPECT_EQ(
        historyCache({{"2026-03-04", 1}, {"2026-03-04T00:00:00", 2}, {"short", 3}, {"2026-03-0\xC3\xA9", 4}}),
        (HistoryCache{{"2026-03-04", 2}, {"short", 3}, {"2026-03-0", 4}}))
        << "in whole characters";
    const auto apps = appDailyCache({{"2026-03-04", "a", "A", 1}, {"2026-03-04T00:00:00", "a", "B", 2}});
    EXPECT_EQ(apps.at("2026-03-04").at("a"), (RemoteAppCount{"B", 2}));
}

TEST(LastSeen, IsReadStrictlyOrIsNow) {
    const std::vector<std::pair<const char*, const char*>> readable{
        {"2026-03-05T14:07:09Z", "2026-03-05T14:07:09Z"},
        {"2026-03-05T14:07:09+00:00", "2026-03-05T14:07:09Z"},
        {"2026-03-05T14:07:09-03:30", "2026-03-05T17:37:09Z"},
        {"2024-02-29T23:59:59Z", "2024-02-29T23:59:59Z"},
        {"1969-12-31T23:59:58Z", "1969-12-31T23:59:58Z"}};
    FakeClock clock(at("UTC", {.year = 2030, .month = 1, .day = 1}));
    for (const auto& [text, seen] : readable) {
        EXPECT_EQ(internetTime(DeviceInfo{"id", "name", text}.lastSeenDate(clock)), seen) << text;
    }
    for (const char* text : {"2026-03-05T14:07:09.123Z", "2026-03-05T14:07:09", "2026-03-05T14:07:09+24:00",
                             "2026-03-05T14:07:09Z ", "2026-02-29T00:00:00Z", "2026-03-05T24:00:00Z",
                             "2026-+3-05T14:07:09Z", "9999-12-31T23:59:59Z", ""}) {
        clock.advance(std::chrono::hours(1));
        EXPECT_EQ((DeviceInfo{"id", "name", text}.lastSeenDate(clock)), clock.now()) << text;
    }
}

} // namespace
} // namespace fernhollow::tests
