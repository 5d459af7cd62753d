#include "Support/DebugLog.h"
#include "Support/TemporaryHome.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <thread>

namespace fernhollow {
namespace {

namespace fs = std::filesystem;
using testing::MatchesRegex;
using tests::EnvironmentGuard;
using tests::TemporaryHome;

constexpr const char* stamp = "\\[[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z\\] ";

TEST(DebugLog, AppendsOneLinePerCallToAPrivateFile) {
    const TemporaryHome home;
    debugLog("[First] line");
    debugLog("");
    debugLog("two\nlines");
    EXPECT_THAT(home.log(), MatchesRegex(std::string(stamp) + "\\[First\\] line\n" + stamp + "\n" + stamp +
                                         "two\nlines\n"));
    struct stat file{};
    ASSERT_EQ(::stat((home.path() / "fernhollow_debug.log").c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 0777, 0600u);
    EXPECT_EQ(std::distance(fs::directory_iterator(home.path()), {}), 1); // nothing is left of its making
}

TEST(DebugLog, LosesTheLineWhereNothingCanBeWritten) {
    const TemporaryHome home;
    const EnvironmentGuard nowhere("HOME", (home.path() / "missing").native());
    debugLog("lost");
    EXPECT_FALSE(fs::exists(home.path() / "missing"));

    const EnvironmentGuard folder("HOME", home.path().native());
    fs::create_directory(home.path() / "fernhollow_debug.log");
    debugLog("lost");
    EXPECT_TRUE(fs::is_directory(home.path() / "fernhollow_debug.log"));
}

TEST(DebugLog, KeepsEveryLineOfManyThreads) {
    const TemporaryHome home;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([] {
                for (int line = 0; line < 100; ++line) {
                    debugLog("[Thread] a line that must stay whole");
                }
            });
        }
    }
    const std::string log = home.log();
    std::size_t whole = 0;
    for (std::size_t at = 0;
         (at = log.find("Z] [Thread] a line that must stay whole\n", at)) != std::string::npos; ++at) {
        ++whole;
    }
    EXPECT_EQ(whole, 400u);
}

} // namespace
} // namespace fernhollow
