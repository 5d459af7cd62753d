#include "KeypressCore/DailyCountsDatabase.h"
#include "KeypressCore/DailyCountsStore.h"
#include "Model/CountExport.h"
#include "Support/TemporaryHome.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace fernhollow {
namespace {

using tests::TemporaryHome;

const DayKey monday("2026-03-09");
const DayKey tuesday("2026-03-10");

/// Monday: 20 presses, 12 of them with an hour, 9 of those with an application. Tuesday: not flushed yet.
void fill(const std::string& email) {
    DailyCountsDatabase database(DailyCountsStore::urlForAccount(email),
                                 {.owner = DailyCountsStore::ownerMark(email)});
    database.increment(monday, 20, 0);
    database.incrementHourly(monday, 9, 8, 0);
    database.incrementHourly(monday, 10, 4, 0);
    database.incrementAppHourly(monday, 9, "org.editor", 5, 0);
    database.incrementAppHourly(monday, 10, "org.chat", 4, 0);
    database.registerApp("org.editor", "Write, \"fast\"", 0);
    database.incrementHourly(tuesday, 7, 3, 0);
}

TEST(CountExport, HoldsEachPressOnce) {
    const TemporaryHome home;
    fill("ana@example.com");
    const CountExport all = CountExport::ofAccount("ana@example.com", tuesday);
    EXPECT_EQ(all.csv(), "day,hour,application,name,count\r\n"
                         "2026-03-09,9,org.editor,\"Write, \"\"fast\"\"\",5\r\n"
                         "2026-03-09,10,org.chat,,4\r\n"
                         "2026-03-09,9,,,3\r\n"
                         "2026-03-09,,,,8\r\n"
                         "2026-03-10,7,,,3\r\n");
    const auto days = nlohmann::json::parse(all.json());
    EXPECT_EQ(days[0]["count"], 20);
    EXPECT_EQ(days[0]["applications"][0]["name"], "Write, \"fast\"");
    EXPECT_EQ(days[1], nlohmann::json::parse(CountExport::ofDay("ana@example.com", tuesday).dayJson()));
}

TEST(CountExport, MakesNoDatabaseAndReadsNoOtherAccounts) {
    const TemporaryHome home;
    const std::string shared = "someone.with.a.long.address"; // two accounts whose files would be the same
    EXPECT_EQ(CountExport::ofAccount(shared + "@a.org", monday).csv(), "day,hour,application,name,count\r\n");
    EXPECT_FALSE(std::filesystem::exists(DailyCountsStore::urlForAccount(shared + "@a.org")));
    fill(shared + "@a.org");
    EXPECT_EQ(CountExport::ofDay(shared + "@b.org", monday).days.front().count, 0);
}

} // namespace
} // namespace fernhollow
