#include "UpdaterFixture.h"

namespace fernhollow::tests {
namespace {

class Cycle : public UpdaterFixture {};

TEST_F(Cycle, ShowsHowACheckEndedToThePersonWhoAskedForIt) {
    EXPECT_EQ(source_->removals, 1) << "what an earlier run left behind";
    check();
    source_->found.resolve(std::nullopt);
    EXPECT_THAT(takeCalls(), ElementsAre("begin", "nothing", "end"));
    EXPECT_THAT(takeShown(), ElementsAre("checking", "up to date 0.2.0"));
    check();
    source_->found.fail(UpdateError::Reason::feed, "No answer.");
    EXPECT_THAT(takeCalls(), ElementsAre("begin", "abort: No answer.", "end: No answer."));
    EXPECT_THAT(takeShown(), ElementsAre("checking", "error: No answer."));
    check();
    const auto cancel = driver_->cancel;
    cancel();
    EXPECT_THAT(takeCalls(), ElementsAre("begin", "end"));
    cancel(); // the button may be pressed twice
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(Cycle, HandsAPackageOverAndSaysWhatIsLeftToDo) {
    installer_->outcome = UpdateInstaller::Outcome::handedOver;
    download();
    EXPECT_EQ(installer_->installations, 0) << "nothing before the person says so";
    takeCalls();
    choose(UpdateChoice::install);
    EXPECT_THAT(takeCalls(), ElementsAre("install", "end"));
    EXPECT_EQ(driver_->shown.back(), "note: Open the folder.");
    EXPECT_EQ(installer_->relaunches, 0);
}

// Who heard of the download takes its end for a step; it is told once more, as the outcome of a check.
TEST_F(Cycle, ReportsACancelledDownloadAsTheOutcomeOfACheck) {
    find();
    choose(UpdateChoice::install);
    takeCalls();
    driver_->cancel();
    EXPECT_THAT(takeCalls(), ElementsAre("end", "begin", "end"));
    EXPECT_EQ(driver_->shown.back(), "dismiss");
}

TEST_F(Cycle, KeepsTheOldProgramAndSaysWhyWhenTheInstallationFails) {
    installer_->failure.emplace(UpdateError::Reason::install, "Disk full.");
    download();
    choose(UpdateChoice::install);
    EXPECT_EQ(delegate_.calls.back(), "end: Disk full.");
    EXPECT_EQ(driver_->shown.back(), "error: Disk full.");
    EXPECT_EQ(installer_->relaunches, 0);
    EXPECT_FALSE(std::filesystem::exists(package()));
}

TEST_F(Cycle, OffersAKeptDownloadAtOnceUntilANewerReleaseOrItsLoss) {
    download();
    choose(UpdateChoice::later);
    find();
    EXPECT_EQ(driver_->shown.back(), "ready 0.3.0");
    EXPECT_EQ(source_->downloads, 1);
    choose(UpdateChoice::later);

    download("0.4.0");
    EXPECT_FALSE(std::filesystem::exists(package()));
    choose(UpdateChoice::later);
    std::filesystem::remove(package("0.4.0"));
    find("0.4.0");
    EXPECT_EQ(driver_->shown.back(), "found 0.4.0");
}

// The button may have announced a check of its own; it must hear again where the cycle stands.
TEST_F(Cycle, ComesForwardAndTellsWhereItStands) {
    check();
    takeCalls();
    updater_->checkForUpdates();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(driver_->shown.back(), "focus");
    source_->found.resolve(release("0.3.0"));
    takeCalls();
    updater_->checkForUpdates();
    EXPECT_THAT(takeCalls(), ElementsAre("found 0.3.0"));
    choose(UpdateChoice::install);
    takeCalls();
    updater_->checkForUpdates();
    EXPECT_THAT(takeCalls(), ElementsAre("download"));
    finishDownload();
    takeCalls();
    updater_->checkForUpdates();
    EXPECT_THAT(takeCalls(), ElementsAre("downloaded"));
    EXPECT_EQ(driver_->shown.back(), "focus");
    EXPECT_EQ(source_->checks, 1);
}

TEST_F(Cycle, EndsSilentlyWithTheProgram) {
    for (int step = 0; step < 3; ++step) {
        SCOPED_TRACE(step);
        find();
        if (step > 0) {
            choose(UpdateChoice::install);
        }
        if (step > 1) {
            finishDownload();
        }
        takeCalls();
        updater_->stop();
        EXPECT_THAT(takeCalls(), IsEmpty());
        EXPECT_EQ(installer_->installations, 0);
        EXPECT_EQ(driver_->shown.back(), "dismiss");
        const std::weak_ptr<Updater> old = updater_;
        restart();
        EXPECT_TRUE(old.expired()) << "no coroutine keeps it";
        EXPECT_FALSE(std::filesystem::exists(package()));
    }
}

TEST_F(Cycle, NeverLooksWithoutAConfiguration) {
    configuration_.reset();
    source_->removals = 0;
    for (int start = 0; start < 3; ++start) {
        restart();
        EXPECT_EQ(clock_.sleepers(), 0);
    }
    EXPECT_FALSE(updater_->canCheckForUpdates.get());
    updater_->checkForUpdates();
    EXPECT_THAT(takeCalls(), ElementsAre("end"));
    EXPECT_THAT(takeShown(), ElementsAre(StartsWith("note: ")));
    EXPECT_EQ(source_->checks, 0);
    EXPECT_EQ(source_->removals, 0);
}

} // namespace
} // namespace fernhollow::tests
