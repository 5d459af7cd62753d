#include "KeypressCore/Calendar.h"
#include "KeypressCore/DayKey.h"
#include "Support/Testing.h"

#include <nlohmann/json.hpp>

#include <utility>
#include <vector>

namespace fernhollow::tests {
namespace {

TEST(DayKeyFromInstant, ChangesAtLocalMidnight) {
    const Calendar berlin("Europe/Berlin");
    const Instant midnight = at("Europe/Berlin", {.year = 2026, .month = 1, .day = 6});

    EXPECT_EQ(DayKey(midnight - 1s, berlin).rawValue, "2026-01-05");
    EXPECT_EQ(DayKey(midnight, berlin).rawValue, "2026-01-06");
    EXPECT_EQ(DayKey(midnight, Calendar("America/New_York")).rawValue, "2026-01-05");
    EXPECT_EQ(DayKey(midnight, Calendar("Pacific/Kiritimati")).rawValue, "2026-01-06");
}

TEST(DayKeyToInstant, IsNoonOfTheDayOrNothing) {
    const std::vector<std::pair<const char*, const char*>> days{// empty where the text is not a day
                                                                {"2026-01-05", "2026-01-05"},
                                                                {"2026-1-5", "2026-01-05"},
                                                                {"2026-13-01", "2027-01-01"},
                                                                {"2026-01", ""},
                                                                {"2026-01-05x", ""},
                                                                {"2026-01-99999999999", ""},
                                                                {"", ""}};
    const Calendar calendar("Asia/Kathmandu");
    for (const auto& [text, day] : days) {
        const auto noon = DayKey(text).date(calendar);
        EXPECT_EQ(noon ? DayKey(*noon, calendar).rawValue : "", day) << text;
        EXPECT_EQ(noon ? calendar.hour(*noon) : 12, 12) << text;
    }
}

TEST(DayKeyValue, IsEncodedAsItsText) {
    EXPECT_EQ(nlohmann::json(DayKey("2026-01-05")).dump(), R"({"rawValue":"2026-01-05"})");
    EXPECT_EQ(nlohmann::json::parse(R"({"rawValue":"any text"})").get<DayKey>().rawValue, "any text");
    EXPECT_THROW(nlohmann::json("2026-01-05").get<DayKey>(), nlohmann::json::exception);
}

} // namespace
} // namespace fernhollow::tests
