#include "Model/UpdateManager.h"
#include "Support/FakeUpdaterController.h"
#include "Support/Releases.h"
#include "Support/Testing.h"

namespace fernhollow::tests {
namespace {

class UpdateManagerTest : public testing::Test {
protected:
    // What a callback changes, it changes in a later turn of the event loop.
    void deliver() {
        bool isDelivered = false;
        tasks_.start([&] {
            isDelivered = true;
            return noTask();
        });
        ASSERT_TRUE(waitUntil([&] { return isDelivered; }));
    }

    const UpdateState& state() {
        deliver();
        return fakes_.manager->state.get();
    }

    UpdaterDelegate& delegate() { return fakes_.updater->delegate; }

    TemporaryHome home_;
    FakelyUpdated fakes_;
    TaskScope tasks_;
};

using Call = std::function<void(UpdaterDelegate&)>;
const AppcastItem newRelease = release("0.3.0");
const std::string broken = "It broke.";
const Call begin = [](auto& d) { d.mayPerform(UpdateCheck::scheduled); };
const Call nothing = [](auto& d) { d.updaterDidNotFindUpdate("Nothing newer."); };
const Call found = [](auto& d) { d.didFindValidUpdate(newRelease); };
const Call download = [](auto& d) { d.willDownloadUpdate(newRelease); };
const Call downloaded = [](auto& d) { d.didDownloadUpdate(newRelease); };
const Call fail = [](auto& d) { d.didAbortWithError(broken); };
const Call end = [](auto& d) { d.didFinishUpdateCycleFor(UpdateCheck::scheduled, std::nullopt); };
const Call endBroken = [](auto& d) { d.didFinishUpdateCycleFor(UpdateCheck::scheduled, broken); };

TEST_F(UpdateManagerTest, ShowsHowFarTheCycleCameAndHowItEnded) {
    const std::vector<std::pair<std::vector<Call>, UpdateState>> cycles{
        {{begin}, UpdateChecking{}},
        {{begin, end}, UpdateIdle{}},
        {{begin, nothing, end}, UpdateUpToDate{}},
        {{begin, fail, endBroken}, UpdateFailed{broken}},
        {{begin, endBroken}, UpdateFailed{broken}},
        {{begin, found, fail, end}, UpdateAvailable{"0.3.0"}},
        {{begin, found, download, fail, endBroken}, UpdateDownloading{}},
        {{begin, found, download, downloaded, end}, UpdateReadyToInstall{}}};
    for (const auto& [calls, expected] : cycles) {
        const UpdateState before = state();
        for (const Call& call : calls) {
            call(delegate());
        }
        EXPECT_EQ(fakes_.manager->state.get(), before) << "the updater does not wait for us";
        EXPECT_EQ(state(), expected) << describe(expected);
    }
    EXPECT_THAT(home_.log(),
                HasSubstr("[Sparkle] Abort error ignored (state: downloading(progress: 0.0)): It broke.\n"));
}

TEST_F(UpdateManagerTest, MirrorsWhetherACheckCanBegin) {
    EXPECT_FALSE(fakes_.manager->canCheckForUpdates.get());
    for (const bool canCheck : {true, false}) {
        fakes_.updater->canCheck.set(canCheck);
        EXPECT_NE(fakes_.manager->canCheckForUpdates.get(), canCheck);
        deliver();
        EXPECT_EQ(fakes_.manager->canCheckForUpdates.get(), canCheck);
    }
}

TEST_F(UpdateManagerTest, WhatIsOnItsWayEndsWithIt) {
    begin(delegate());
    fakes_.manager.reset();
    deliver();
    EXPECT_THAT(home_.log(), Not(HasSubstr("[Sparkle]")));
}

} // namespace
} // namespace fernhollow::tests
