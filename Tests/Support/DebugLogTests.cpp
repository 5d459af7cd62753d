#include "Support/DebugLog.h"
#include "Support/Testing.h"

#include <cerrno>
#include <fcntl.h>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace {
bool hasHardLinks = true;
}

// Takes the C library's place in this program.
extern "C" int link(const char* from, const char* to) noexcept {
    if (!hasHardLinks) {
        errno = EPERM;
        return -1;
    }
    return ::linkat(AT_FDCWD, from, AT_FDCWD, to, 0);
}

namespace fernhollow::tests {
namespace {

namespace fs = std::filesystem;

constexpr const char* stamp = "\\[[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z\\] ";

TEST(DebugLog, AppendsOneLinePerCallToAPrivateFileWithOrWithoutHardLinks) {
    for (const bool has : {true, false}) {
        const TemporaryHome home;
        hasHardLinks = has;
        debugLog("[First] line");
        debugLog("");
        debugLog("two\nlines");
        hasHardLinks = true;
        EXPECT_THAT(home.log(), MatchesRegex(std::string(stamp) + "\\[First\\] line\n" + stamp + "\n" +
                                             stamp + "two\nlines\n"));
        EXPECT_EQ(modeOf(home.path() / "fernhollow_debug.log"), 0600u);
        EXPECT_EQ(std::distance(fs::directory_iterator(home.path()), {}), 1); // no temporary file is left
    }
}

TEST(DebugLog, LetsNoTextPassForAnEntryOrSteerATerminal) {
    const TemporaryHome home;
    const std::string forged = "[2026-03-05T14:07:09Z] [AccountManager] Signed out";
    debugLog("[A] one\n" + forged + "\n\n[x\r" + forged);
    debugLog("[B] \u2028" + forged + "\u2029\u0085" + forged + "\x1B[2K\x7F \t\u00E9");
    EXPECT_THAT(home.log().substr(23),
                testing::StartsWith("[A] one\\n" + forged + "\n\\n[x\\x0D" + forged + "\n["));
    EXPECT_THAT(home.log(),
                testing::EndsWith("Z] [B] \\xE2\\x80\\xA8" + forged + "\\xE2\\x80\\xA9\\xC2\\x85" + forged +
                                  "\\x1B[2K\\x7F \t\u00E9\n"));
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
    std::istringstream log(home.log());
    int whole = 0;
    for (std::string line; std::getline(log, line);) {
        whole += line.ends_with("Z] [Thread] a line that must stay whole") ? 1 : 0;
    }
    EXPECT_EQ(whole, 400);
}

} // namespace
} // namespace fernhollow::tests
