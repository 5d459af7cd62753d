#include "App/Shell/KeyboardMonitor.h"
#include "Platform/Workspace.h"
#include "Support/Testing.h"

namespace fernhollow::tests {
namespace {

/// A desktop whose answers a test decides.
struct FakeDesktop final : EventTapProvider, Workspace {
    struct Tap final : EventTap {
        explicit Tap(FakeDesktop& owner) : desktop(owner) {}
        ~Tap() override { --desktop.taps; }
        void setEnabled(bool enabled) override { desktop.isEnabled = enabled; }
        FakeDesktop& desktop;
    };

    bool isProcessTrusted(bool prompting) override {
        questions.push_back(prompting);
        return isTrusted;
    }
    std::unique_ptr<EventTap> createTap(Callback callback) override {
        if (!offersTap) {
            return nullptr;
        }
        ++taps;
        deliver = std::move(callback);
        return std::make_unique<Tap>(*this);
    }
    std::optional<FrontmostApplication> frontmostApplication() override { return frontmost; }

    bool isTrusted = true;
    bool offersTap = true;
    bool isEnabled = false;
    int taps = 0;
    std::vector<bool> questions; ///< whether each may prompt
    Callback deliver;
    std::optional<FrontmostApplication> frontmost;
};

class Monitor : public testing::Test {
protected:
    TemporaryHome home_;
    FakeClock clock_{Instant{} + 1h};
    FakeDesktop desktop_;
    std::vector<ActiveAppInfo> presses_;
    int stops_ = 0;
    KeyboardMonitor monitor_{
        {desktop_, desktop_, clock_},
        {[this](const ActiveAppInfo& app) { presses_.push_back(app); }, [this] { ++stops_; }}};
};

TEST_F(Monitor, RunsOneTapHoweverOftenItIsStarted) {
    EXPECT_TRUE(monitor_.start());
    EXPECT_TRUE(monitor_.start());
    EXPECT_EQ(desktop_.taps, 1);
    EXPECT_TRUE(desktop_.isEnabled);
    monitor_.stop();
    monitor_.stop();
    EXPECT_EQ(desktop_.taps, 0);
    desktop_.offersTap = false;
    EXPECT_FALSE(monitor_.start());
    EXPECT_THAT(home_.log(),
                HasSubstr("[KeyboardMonitor] Failed to create event tap even with permission\n"));
    desktop_.offersTap = true;
    EXPECT_TRUE(monitor_.start());
}

TEST_F(Monitor, PromptsOncePerRunAndLooksCloselyEveryThirtySeconds) {
    desktop_.isTrusted = false;
    EXPECT_FALSE(monitor_.start()); // the full question, with the prompt
    clock_.advance(29s);
    EXPECT_FALSE(monitor_.start()); // a silent look
    clock_.advance(1s);
    EXPECT_FALSE(monitor_.start()); // the full question, but the person was asked before
    EXPECT_THAT(desktop_.questions, ElementsAre(true, false, false));
    const std::string message =
        "[KeyboardMonitor] Accessibility permission not granted - prompted user once\n";
    EXPECT_THAT(home_.log(), HasSubstr(message));
    EXPECT_EQ(home_.log().find(message), home_.log().rfind(message));

    desktop_.isTrusted = true;
    clock_.advance(1s);
    EXPECT_TRUE(monitor_.start());
}

TEST_F(Monitor, ReportsEachPressWithTheApplicationInFront) {
    ASSERT_TRUE(monitor_.start());
    desktop_.frontmost = {{"org.a", "A"}};
    desktop_.deliver(TapEvent::keyDown);
    desktop_.frontmost = {{"org.b", std::nullopt}};
    desktop_.deliver(TapEvent::keyDown);
    desktop_.frontmost = {{std::nullopt, "Nameful"}};
    desktop_.deliver(TapEvent::keyDown);
    desktop_.frontmost = {{std::nullopt, std::nullopt}};
    desktop_.deliver(TapEvent::keyDown);
    desktop_.frontmost = std::nullopt;
    desktop_.deliver(TapEvent::keyDown);
    EXPECT_THAT(presses_,
                ElementsAre(ActiveAppInfo{"org.a", "A"}, ActiveAppInfo{"org.b", "org.b"},
                            ActiveAppInfo{"unknown", "Nameful"}, ActiveAppInfo{"unknown", "unknown"},
                            ActiveAppInfo{"unknown", "Unknown"}));
}

TEST_F(Monitor, LogsTheFirstFiveEventsAndEveryHundredth) {
    KeyboardMonitor::keyCount = 0;
    ASSERT_TRUE(monitor_.start());
    for (int i = 0; i < 200; ++i) {
        desktop_.deliver(TapEvent::keyDown);
    }
    std::vector<std::string> totals;
    const std::string log = home_.log();
    const std::string prefix = "Key event received (total: ";
    for (std::size_t at = 0; (at = log.find(prefix, at)) != std::string::npos; at += prefix.size()) {
        totals.push_back(log.substr(at + prefix.size(), log.find(')', at) - at - prefix.size()));
    }
    EXPECT_THAT(totals, ElementsAre("1", "2", "3", "4", "5", "100", "200"));
}

TEST_F(Monitor, StopsAndSaysSoWhenTheDesktopTakesTheTapAway) {
    ASSERT_TRUE(monitor_.start());
    const auto deliver = desktop_.deliver; // the tap keeps its callback alive while it delivers
    deliver(TapEvent::disabled);
    EXPECT_EQ(stops_, 1);
    EXPECT_EQ(desktop_.taps, 0);
    EXPECT_TRUE(presses_.empty());
    EXPECT_TRUE(monitor_.start());
}

} // namespace
} // namespace fernhollow::tests
