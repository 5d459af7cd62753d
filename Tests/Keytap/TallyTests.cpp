#include "Keytap/Tally.h"

#include <gtest/gtest.h>

#include <vector>

namespace fernhollow::keytap {
namespace {

using namespace std::chrono_literals;

TEST(Repeats, FollowTheSession) {
    struct Case {
        Time held;
        RepeatSettings settings;
        std::uint64_t repeats;
    };
    const std::vector<Case> cases{
        {599ms, {600, 25}, 0}, {600ms, {600, 25}, 1}, {639ms, {600, 25}, 1},          {640ms, {600, 25}, 2},
        {10s, {600, 0}, 0},    {0ms, {0, 25}, 1},     {240h, {0, 1000}, 864'000'001},
    };
    for (const auto& [held, settings, expected] : cases) {
        EXPECT_EQ(repeats(held, settings), expected) << held.count() << " us, rate " << settings.rate;
    }
}

TEST(TallyTest, CountsEachRepeatOnceHoweverOftenItIsSettled) {
    Tally tally;
    tally.setRepeat({500, 10}, 0ms);
    tally.press(1000ms);
    for (const Time now : {1400ms, 1500ms, 1550ms, 1599ms, 1600ms, 1550ms}) {
        tally.settle(now);
    }
    EXPECT_EQ(tally.pending(), 3); // the press, and repeats at 1500 and 1600
    tally.release(1750ms);         // 1700
    tally.settle(5000ms);
    EXPECT_EQ(tally.pending(), 4);
}

TEST(TallyTest, AnotherKeyTakesTheRepeatingOver) {
    Tally tally;
    tally.setRepeat({500, 10}, 0ms);
    tally.press(0ms);
    tally.press(650ms); // the first repeated at 500 and 600
    tally.release(1200ms);
    EXPECT_EQ(tally.pending(), 5); // the second at 1150
}

TEST(TallyTest, NewSettingsHoldFromNowOn) {
    Tally tally;
    tally.setRepeat({500, 10}, 0ms);
    tally.press(0ms);
    tally.setRepeat({100, 100}, 600ms); // two repeats so far
    EXPECT_EQ(tally.pending(), 3);
    tally.settle(620ms);
    EXPECT_EQ(tally.pending(), 5);
    EXPECT_TRUE(tally.isRepeating());
    tally.setRepeat({100, 0}, 620ms);
    tally.settle(9s);
    EXPECT_EQ(tally.pending(), 5);
    EXPECT_FALSE(tally.isRepeating());
}

} // namespace
} // namespace fernhollow::keytap
