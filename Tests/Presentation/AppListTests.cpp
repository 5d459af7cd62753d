#include "Presentation/AppList.h"
#include "Presentation/FixedDecimals.h"
#include "Presentation/TextSearch.h"
#include "Support/Testing.h"

namespace fernhollow::tests {
namespace {

Instant newYork(int day, int hour, int minute = 0) {
    return at("America/New_York", {.year = 2026, .month = 3, .day = day, .hour = hour, .minute = minute});
}

std::vector<std::string_view> names(const std::vector<AppDisplayItem>& items) {
    std::vector<std::string_view> names;
    for (const auto& item : items) {
        names.push_back(item.appName);
    }
    return names;
}

TEST(AppLists, HoldTheRecordsOfTheCalendarDay) {
    const std::vector<AppTracker::DailyAppStats> history{
        {newYork(7, 23, 59), "b", "The day before", 1},
        {newYork(8, 0), "c", "Midnight", 2},
        {newYork(8, 12), "a", "Noon", 3},
        {newYork(8, 23, 59), "d", "Late", 4},
        {newYork(9, 0), "e", "The day after", 5},
    };
    const Calendar calendar("America/New_York"); // on the 8th the day has 23 hours
    for (const Instant date : {newYork(8, 0), newYork(8, 12), newYork(8, 23, 59)}) {
        EXPECT_THAT(names(AppList::ofDay(history, date, calendar)), ElementsAre("Midnight", "Noon", "Late"));
    }
    EXPECT_THAT(AppList::ofDay(history, newYork(20, 12), calendar), IsEmpty());
}

TEST(AppLists, AreInDescendingCountAndKeepTheOrderOfEqualOnes) {
    const std::vector<AppTracker::AppStats> totals{
        {"z", "Zed", 5, false}, {"b", "Bee", 7, false}, {"a", "Ay", 5, true}, {"n", "Nil", 0, false}};
    TextSearch search("en_US");
    auto items = AppList::ofToday(totals);
    AppList::arrange(items, search);
    EXPECT_THAT(items, ElementsAre(AppDisplayItem{"b", "Bee", 7}, AppDisplayItem{"z", "Zed", 5},
                                   AppDisplayItem{"a", "Ay", 5}, AppDisplayItem{"n", "Nil", 0}));

    search.setText("E");
    AppList::arrange(items, search);
    EXPECT_THAT(names(items), ElementsAre("Bee", "Zed"));
    search.setText("bees");
    AppList::arrange(items, search);
    EXPECT_THAT(items, IsEmpty());
}

TEST(AppLists, GiveSharesOfTheTotal) {
    std::vector<AppDisplayItem> items{{"a", "A", 1}, {"b", "B", 3}};
    AppList::setPercentages(items, 8);
    EXPECT_THAT(items, ElementsAre(AppDisplayItem{"a", "A", 1, 12.5}, AppDisplayItem{"b", "B", 3, 37.5}));
    AppList::setPercentages(items, 0);
    EXPECT_THAT(items, ElementsAre(AppDisplayItem{"a", "A", 1, 0}, AppDisplayItem{"b", "B", 3, 0}));
}

TEST(FiguresOfADay, ComeFromItsApplicationsAndHours) {
    const DayFigures nothing = DayFigures::of({}, {});
    EXPECT_EQ(nothing, (DayFigures{0, 0, std::nullopt}));
    EXPECT_EQ(nothing.averagePerHour(), 0);
    EXPECT_EQ(DayFigures::of({{"a", "A", 10}}, {}), (DayFigures{10, 0, std::nullopt})) << "a past day";
    const DayFigures figures = DayFigures::of(
        {{"a", "A", 6}, {"b", "B", 5}},
        {{14, "a", "A", 4}, {9, "a", "A", 2}, {14, "b", "B", 1}, {9, "b", "B", 3}, {7, "b", "B", 5}});
    EXPECT_EQ(figures, (DayFigures{11, 3, 7})) << "the first of hours that are as busy as each other";
    EXPECT_DOUBLE_EQ(figures.averagePerHour(), 11.0 / 3);
}

TEST(FixedDecimals, RoundLikeC) {
    const std::vector<std::tuple<double, int, const char*>> cases{
        {0, 0, "0"},         {0.5, 0, "0"},       {1.5, 0, "2"},
        {1000.5, 0, "1000"}, {99.96, 1, "100.0"}, {6.25, 1, "6.2"},
        {0.04, 1, "0.0"},    {33.35, 1, "33.4"},  {1e18, 0, "1000000000000000000"},
    };
    for (const auto& [number, decimals, text] : cases) {
        EXPECT_EQ(fixedDecimals(number, decimals), text);
    }
}

} // namespace
} // namespace fernhollow::tests
