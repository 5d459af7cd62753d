#include "UpdaterFixture.h"

namespace fernhollow::tests {
namespace {

class Schedule : public UpdaterFixture {
protected:
    void agree() {
        UpdatePreferences::setAutomaticChecks(true);
        restart();
    }

    /// Whether a check has begun by itself; ends it with `found`.
    bool checksItself(const std::optional<AppcastItem>& found = std::nullopt) {
        const bool hasBegun = !delegate_.calls.empty() && delegate_.calls.front() == "begin scheduled";
        if (hasBegun) {
            expectCheck();
            source_->found.resolve(found);
        }
        return hasBegun;
    }

    void passHours(int hours) {
        for (int hour = 0; hour < hours; ++hour) {
            clock_.advance(1h);
        }
    }

    bool isAsked() {
        return waitUntil([this] { return driver_->permission.isAwaited(); });
    }
};

TEST_F(Schedule, AsksAtTheSecondStartUntilThereIsAnAnswer) {
    EXPECT_EQ(clock_.sleepers(), 0);
    restart();
    EXPECT_THAT(driver_->shown, IsEmpty());
    clock_.advance(UpdateSchedule::askDelay);
    ASSERT_TRUE(isAsked());
    EXPECT_THAT(takeCalls(), IsEmpty()) << "nothing goes over the network before the answer";
    check(); // takes the question's place
    EXPECT_EQ(UpdatePreferences::automaticChecks(), std::nullopt);
    restart();
    passHours(24);
    ASSERT_TRUE(isAsked());

    driver_->permission.resolve(true);
    EXPECT_EQ(UpdatePreferences::automaticChecks(), true);
    EXPECT_EQ(driver_->shown.back(), "dismiss");
    clock_.advance(0s);
    EXPECT_TRUE(checksItself());

    UpdatePreferences::setAutomaticChecks(false);
    restart();
    EXPECT_EQ(clock_.sleepers(), 0) << "no is an answer";
    check(); // a person still may
}

TEST_F(Schedule, ChecksOnceADayAndFailsQuietly) {
    agree();
    EXPECT_FALSE(checksItself());
    clock_.advance(UpdateSchedule::checkDelay);
    expectCheck();
    source_->found.fail(UpdateError::Reason::feed, "No network.");
    EXPECT_THAT(takeCalls(), ElementsAre("begin scheduled", "abort: No network.", "end: No network."));
    EXPECT_THAT(takeShown(), IsEmpty());
    passHours(23);
    EXPECT_FALSE(checksItself());
    passHours(1);
    EXPECT_TRUE(checksItself());
    EXPECT_EQ(clock_.sleepers(), 1);

    check(); // a day from the last check of any kind, also in another run
    source_->found.resolve(std::nullopt);
    passHours(20);
    restart();
    passHours(3);
    EXPECT_FALSE(checksItself());
    passHours(1);
    EXPECT_TRUE(checksItself());
}

TEST_F(Schedule, IsNotHeldUpByASleepingMachineOrAClockThatWasSetBack) {
    agree();
    clock_.advance(UpdateSchedule::checkDelay);
    ASSERT_TRUE(checksItself());
    takeCalls();
    clock_.set(clock_.now() + std::chrono::days(3)); // timers stood still meanwhile
    clock_.advance(1h);
    ASSERT_TRUE(checksItself());
    takeCalls();
    clock_.set(clock_.now() - std::chrono::days(300));
    clock_.advance(1h);
    EXPECT_TRUE(checksItself());
    takeCalls();
    passHours(23);
    EXPECT_FALSE(checksItself());
}

TEST_F(Schedule, OffersGentlyAndShowsTheWindowAtAClick) {
    agree();
    clock_.advance(UpdateSchedule::checkDelay);
    ASSERT_TRUE(checksItself(release("0.3.0")));
    EXPECT_THAT(takeCalls(), ElementsAre("begin scheduled", "found 0.3.0", "show"));
    EXPECT_THAT(takeShown(), ElementsAre("gently found 0.3.0"));
    updater_->checkForUpdates();
    EXPECT_THAT(takeCalls(), ElementsAre("found 0.3.0"));
    EXPECT_THAT(takeShown(), ElementsAre("focus"));
    choose(UpdateChoice::install);
    EXPECT_EQ(takeCalls(), std::vector<std::string>{"download"});
    EXPECT_EQ(source_->checks, 1);
}

TEST_F(Schedule, RenewsAnOfferThatNobodyLookedAt) {
    agree();
    clock_.advance(UpdateSchedule::checkDelay);
    ASSERT_TRUE(checksItself(release("0.3.0")));
    takeCalls();
    passHours(24);
    EXPECT_THAT(takeCalls(), ElementsAre("end"));
    clock_.advance(UpdateSchedule::busyDelay);
    ASSERT_TRUE(checksItself(release("0.4.0")));
    EXPECT_EQ(driver_->shown.back(), "gently found 0.4.0");

    updater_->checkForUpdates();
    takeShown();
    passHours(48);
    EXPECT_THAT(takeShown(), IsEmpty()) << "what somebody reads stays";
}

TEST_F(Schedule, PassesOverWhatWasSkippedUntilAPersonAsks) {
    find();
    choose(UpdateChoice::skip);
    EXPECT_EQ(takeCalls().back(), "end");
    agree();
    passHours(24);
    ASSERT_TRUE(checksItself(release("0.3.0")));
    EXPECT_THAT(takeCalls(), ElementsAre("begin scheduled", "nothing", "end"));
    find();
    EXPECT_EQ(driver_->shown.back(), "found 0.3.0");
    choose(UpdateChoice::later);
    takeCalls();
    passHours(24);
    ASSERT_TRUE(checksItself(release("0.4.0")));
    EXPECT_EQ(driver_->shown.back(), "gently found 0.4.0");
}

} // namespace
} // namespace fernhollow::tests
