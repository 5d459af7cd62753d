// What typing, and what doing nothing, adds to the log.

#include "SyncFixture.h"

#include <sstream>
#include <string>

namespace fernhollow::tests {
namespace {

using namespace std::chrono_literals;

class LogGrowth : public SyncFixture {
protected:
    /// The bytes of two minutes, after the start's own lines. Those of the sync engine's cycles are left out.
    std::size_t modelsBytes(int pressesPerSecond) {
        startModel();
        pass(5s);
        std::size_t before = home_.log().size();
        for (int second = 0; second < 120; ++second) {
            press(pressesPerSecond);
            pass(1s);
        }
        std::istringstream log(home_.log().substr(before));
        std::size_t bytes = 0;
        for (std::string line; std::getline(log, line);) {
            bytes += line.find("] [CloudSync] ") == std::string::npos ? line.size() + 1 : 0;
        }
        return bytes;
    }
};

TEST_F(LogGrowth, IsAFewLinesForMinutesOfTyping) {
    EXPECT_LE(modelsBytes(5), 1'500u);
}

TEST_F(LogGrowth, IsALineForAMachineThatShowsTheOthersTotal) {
    answers_["get_account_today_total"].body = "250";
    EXPECT_LE(modelsBytes(0), 150u);
}

TEST_F(LogGrowth, IsNothingWhileTheKeyboardIsNotToBeHad) {
    isMonitorAllowed_ = false;
    EXPECT_EQ(modelsBytes(0), 0u);
}

} // namespace
} // namespace fernhollow::tests
