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

    void enter(const UpdateState& wanted) { fakes_.manager->state.set(wanted); }

    TemporaryHome home_;
    FakelyUpdated fakes_;
    TaskScope tasks_;
};

struct Callback {
    std::function<void(UpdaterDelegate&)> call;
    UpdateState before;
    UpdateState after;
    std::string line; ///< empty: no line
};

const AppcastItem newRelease = release("0.3.0");
const std::string broken = "It broke.";

const auto mayPerform = [](UpdaterDelegate& d) { d.mayPerform(UpdateCheck::scheduled); };
const auto abortIt = [](UpdaterDelegate& d) { d.didAbortWithError(broken); };
const auto finishIt = [](UpdaterDelegate& d) {
    d.didFinishUpdateCycleFor(UpdateCheck::scheduled, std::nullopt);
};
const auto finishBroken = [](UpdaterDelegate& d) {
    d.didFinishUpdateCycleFor(UpdateCheck::scheduled, broken);
};

TEST_F(UpdateManagerTest, ChangesItsStateLaterAndWritesALine) {
    for (const auto& [call, before, after, line] : std::vector<Callback>{
             {mayPerform, UpdateFailed{"x"}, UpdateChecking{}, "Starting update check..."},
             {[](auto& d) { d.didFindValidUpdate(newRelease); }, UpdateChecking{}, UpdateAvailable{"0.3.0"},
              "Update found: 0.3.0"},
             {[](auto& d) { d.updaterDidNotFindUpdate("Nothing newer."); }, UpdateChecking{},
              UpdateUpToDate{},
              "No update available (current: v" + UpdateManager::currentVersion() +
                  "), reason: Nothing newer."},
             {abortIt, UpdateChecking{}, UpdateFailed{broken}, "Error: It broke."},
             {abortIt, UpdateDownloading{}, UpdateDownloading{},
              "Abort error ignored (state: downloading(progress: 0.0)): It broke."},
             {abortIt, UpdateAvailable{"0.3.0"}, UpdateAvailable{"0.3.0"},
              "Abort error ignored (state: updateAvailable(version: \"0.3.0\")): It broke."},
             {[](auto& d) { d.willDownloadUpdate(newRelease); }, UpdateAvailable{"0.3.0"},
              UpdateDownloading{0}, "Downloading update..."},
             {[](auto& d) { d.didDownloadUpdate(newRelease); }, UpdateDownloading{}, UpdateReadyToInstall{},
              "Download complete, ready to install"},
             {[](auto& d) { d.willInstallUpdate(newRelease); }, UpdateReadyToInstall{},
              UpdateReadyToInstall{}, "Installing update..."},
             {finishBroken, UpdateChecking{}, UpdateFailed{broken},
              "Update cycle finished with error: It broke."},
             {finishBroken, UpdateFailed{"Before."}, UpdateFailed{"Before."},
              "Update cycle error ignored (state already set): It broke."},
             {finishIt, UpdateChecking{}, UpdateIdle{}, "Update cycle finished, state reset to idle"},
             {finishIt, UpdateUpToDate{}, UpdateUpToDate{}, ""}}) {
        SCOPED_TRACE(describe(before) + ", " + line);
        std::filesystem::remove(home_.path() / "fernhollow_debug.log");
        enter(before);
        deliver();
        call(delegate());
        EXPECT_EQ(fakes_.manager->state.get(), before) << "the updater does not wait for us";
        EXPECT_EQ(state(), after);
        EXPECT_THAT(home_.log(),
                    line.empty() ? Not(HasSubstr("[Sparkle]"))
                                 : testing::Matcher<std::string>(HasSubstr("] [Sparkle] " + line + "\n")));
    }
}

TEST_F(UpdateManagerTest, ShowsAClickAtOnceAndHandsItOn) {
    EXPECT_EQ(state(), UpdateState(UpdateIdle{}));
    fakes_.manager->checkForUpdates();
    EXPECT_EQ(fakes_.manager->state.get(), UpdateState(UpdateChecking{}));
    EXPECT_EQ(fakes_.updater->checks, 1);
}

TEST_F(UpdateManagerTest, KeepsTheOrderOfTheCallbacks) {
    mayPerform(delegate());
    delegate().updaterDidNotFindUpdate("Nothing newer.");
    finishIt(delegate());
    EXPECT_EQ(state(), UpdateState(UpdateUpToDate{}));
}

TEST_F(UpdateManagerTest, MirrorsWhetherACheckCanBegin) {
    EXPECT_FALSE(fakes_.manager->canCheckForUpdates.get());
    for (const bool canCheck : {true, false}) {
        fakes_.updater->canCheck.set(canCheck);
        EXPECT_NE(fakes_.manager->canCheckForUpdates.get(), canCheck);
        deliver();
        EXPECT_EQ(fakes_.manager->canCheckForUpdates.get(), canCheck);
    }
    auto& driverDelegate = fakes_.updater->userDriverDelegate;
    EXPECT_TRUE(driverDelegate.supportsGentleScheduledUpdateReminders());
    driverDelegate.standardUserDriverWillHandleShowingUpdate(true, newRelease);
    deliver();
    EXPECT_THAT(home_.log(), HasSubstr("[Sparkle] Will show update UI for 0.3.0\n"));
}

TEST_F(UpdateManagerTest, WhatIsOnItsWayEndsWithIt) {
    mayPerform(delegate());
    fakes_.manager.reset();
    deliver();
    EXPECT_THAT(home_.log(), Not(HasSubstr("[Sparkle]")));
}

} // namespace
} // namespace fernhollow::tests
