#include "KeypressCore/Calendar.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "KeypressCore/DayKey.h"
#include "KeypressCore/Records.h"
#include "Support/FakeClock.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <ostream>
#include <unordered_set>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;
using tests::at;

TEST(DayKeyFromInstant, ChangesAtLocalMidnight) {
    const Calendar berlin("Europe/Berlin");
    const Instant midnight = at("Europe/Berlin", {.year = 2026, .month = 1, .day = 6});

    EXPECT_EQ(DayKey(midnight - 1s, berlin).rawValue, "2026-01-05");
    EXPECT_EQ(DayKey(midnight, berlin).rawValue, "2026-01-06");
    EXPECT_EQ(DayKey(midnight, Calendar("America/New_York")).rawValue, "2026-01-05");
    EXPECT_EQ(DayKey(midnight, Calendar("Pacific/Kiritimati")).rawValue, "2026-01-06");
}

TEST(DayKeyFromInstant, IsRightOnDaysWhoseMidnightDoesNotExist) {
    // Clocks went from 00:00 to 01:00.
    const Calendar saoPaulo("America/Sao_Paulo");
    const Instant firstSecond = at("America/Sao_Paulo", {.year = 2018, .month = 11, .day = 4, .hour = 1});
    EXPECT_EQ(DayKey(firstSecond, saoPaulo).rawValue, "2018-11-04");
    EXPECT_EQ(DayKey(firstSecond - 1s, saoPaulo).rawValue, "2018-11-03");
    EXPECT_EQ(saoPaulo.startOfDay(firstSecond + 5h), firstSecond);
}

struct ParseCase {
    const char* text;
    const char* day; ///< empty when the text is no day
};

void PrintTo(const ParseCase& parse, std::ostream* out) {
    *out << '"' << parse.text << '"';
}

class DayKeyToInstant : public testing::TestWithParam<ParseCase> {};

TEST_P(DayKeyToInstant, IsNoonOfTheDayOrNothing) {
    const Calendar calendar("Asia/Kathmandu");
    const auto noon = DayKey(GetParam().text).date(calendar);
    if (*GetParam().day == '\0') {
        EXPECT_EQ(noon, std::nullopt);
        return;
    }
    ASSERT_TRUE(noon);
    EXPECT_EQ(DayKey(*noon, calendar).rawValue, GetParam().day);
    EXPECT_EQ(calendar.hour(*noon), 12);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, DayKeyToInstant,
    testing::Values(ParseCase{"2026-01-05", "2026-01-05"}, ParseCase{"2026-1-5", "2026-01-05"},
                    ParseCase{"2026--01-05", "2026-01-05"}, ParseCase{"-2026-01-05-", "2026-01-05"},
                    ParseCase{"+2026-+1-5", "2026-01-05"}, ParseCase{"2026-13-01", "2027-01-01"},
                    ParseCase{"2026-01", ""}, ParseCase{"2026-01-05-07", ""}, ParseCase{"abcd-01-05", ""},
                    ParseCase{"2026-01- 5", ""}, ParseCase{"2026-01-05x", ""},
                    ParseCase{"2026-01-99999999999", ""}, ParseCase{"", ""}));

TEST(DayKeyValue, IsOrderedHashedAndEncodedAsItsText) {
    EXPECT_LT(DayKey("2026-01-09"), DayKey("2026-01-10"));
    EXPECT_GT(DayKey("2026-1-9"), DayKey("2026-01-10"));
    EXPECT_NE(DayKey("2026-1-5"), DayKey("2026-01-05"));
    EXPECT_EQ((std::unordered_set{DayKey("a"), DayKey("b"), DayKey("a")}).size(), 2u);

    EXPECT_EQ(nlohmann::json(DayKey("2026-01-05")).dump(), R"({"rawValue":"2026-01-05"})");
    EXPECT_EQ(nlohmann::json::parse(R"({"rawValue":"any text"})").get<DayKey>().rawValue, "any text");
    EXPECT_THROW(nlohmann::json("2026-01-05").get<DayKey>(), nlohmann::json::exception);
}

TEST(Records, AreIdentifiedByTheirPlaceAndComparedByEverything) {
    const DayKey day("2026-01-14");
    EXPECT_EQ((HourlyCountRow{day, 9, 1}).id(), "2026-01-14-9");
    EXPECT_EQ((AppHourlyCountRow{day, 9, "org.gnome.gedit", 1}).id(), "2026-01-14-9-org.gnome.gedit");
    EXPECT_NE((DailyCountRow{day, 1}), (DailyCountRow{day, 2}));
    EXPECT_EQ((DailyCountRow{day, 1}).id(), (DailyCountRow{day, 2}).id());
    EXPECT_NE(std::hash<AppRegistryRow>{}({"a", "A", 1, false}),
              std::hash<AppRegistryRow>{}({"a", "A", 1, true}));
    EXPECT_STREQ(DailyCountsStoreError(14, "Failed to open database").what(),
                 "SQLiteError(14): Failed to open database");
}

} // namespace
} // namespace fernhollow
