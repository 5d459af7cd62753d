// What typing, and what doing nothing, adds to the log.

#include "SyncFixture.h"

#include <cstddef>

namespace fernhollow::tests {
namespace {

class LogGrowth : public SyncFixture {
protected:
    /// The bytes of two minutes, after the start's own lines.
    std::size_t bytes(int pressesPerSecond) {
        startModel();
        pass(5s);
        const std::size_t before = home_.log().size();
        for (int second = 0; second < 120; ++second) {
            press(pressesPerSecond);
            pass(1s);
        }
        return home_.log().size() - before;
    }
};

TEST_F(LogGrowth, IsAFewLinesAMinuteOfTyping) {
    EXPECT_LE(bytes(5), 6'000u);
}

TEST_F(LogGrowth, IsALineOrTwoForAMachineThatShowsTheOthersTotal) {
    answers_["get_account_today_total"].body = "250";
    EXPECT_LE(bytes(0), 300u);
}

TEST_F(LogGrowth, IsNearlyNothingWhileTheKeyboardIsNotToBeHad) {
    isMonitorAllowed_ = false;
    EXPECT_LE(bytes(0), 150u);
}

} // namespace
} // namespace fernhollow::tests
