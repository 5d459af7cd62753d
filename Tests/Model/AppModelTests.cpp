#include "ModelFixture.h"

#include <cstdint>

namespace fernhollow::tests {
namespace {

class Counting : public ModelFixture {
protected:
    Counting() {
        signIn("ana@example.com");
        start();
    }
};

TEST_F(Counting, ShowsPressesAtOnceAndWritesThemWithTheFlush) {
    model_->recordKeypresses(3, {"org.a", "A"});
    EXPECT_EQ(model_->todayCount.get(), 3);
    EXPECT_EQ(model_->todayCountAggregated.get(), 3);
    EXPECT_EQ(model_->appTracker().todayAppTotals.get().front().count, 3);

    tasks_.beginWaiting();
    refresh();
    EXPECT_THAT(storedHours(today), ElementsAre(HourlyCountRow{today, 9, 3})); // at once
    EXPECT_EQ(storedCount(today), 0);                                          // with the flush

    flush();
    flush();
    EXPECT_EQ(storedCount(today), 3);
    EXPECT_EQ(model_->todayCount.get(), 3);
    press(2);
    flush();
    EXPECT_EQ(storedCount(today), 5);
}

TEST_F(Counting, IgnoresNoPressesAndPressesWhilePaused) {
    for (const std::int64_t none : {0, -3}) {
        model_->recordKeypresses(none, {"org.a", "A"});
    }
    model_->isPaused.set(true);
    press(4);
    EXPECT_EQ(model_->todayCount.get(), 0);
    model_->isPaused.set(false);
    press(1);
    flush();
    EXPECT_EQ(storedCount(today), 1);
}

TEST_F(Counting, KeepsItsPressesWhenTheDailyWriteFails) {
    std::optional<OtherConnection> other(std::in_place);
    press(3);
    tasks_.beginWaiting();
    const auto flushing = model_->flushPending();
    press(2); // while the write waits in vain
    EXPECT_TRUE(waitUntil([&] { return flushing.isReady(); }));
    EXPECT_EQ(model_->todayCount.get(), 5);
    EXPECT_THAT(home_.log(),
                HasSubstr("[AppModel] Hourly counts are not written to " + home_.dataFolder().native()));

    other.reset();
    flush();
    EXPECT_EQ(storedCount(today), 5);
}

TEST_F(Counting, TriesOnceMoreAtTheEndWhateverWasLockedBefore) {
    std::optional<OtherConnection> other(std::in_place);
    press(3);
    flush(); // waits in vain
    EXPECT_FALSE(model_->flushNow(100ms));
    EXPECT_THAT(home_.log(), HasSubstr("[AppModel] 3 presses of 2026-03-05 are not written to "));
    other.reset();
    EXPECT_TRUE(model_->flushNow(10s));
    EXPECT_EQ(storedCount(today), 3);
}

TEST_F(Counting, WritesEverythingBeforeTheProgramEnds) {
    clock_.set(at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 23}));
    press(7);
    clock_.advance(1h);
    press(4);
    EXPECT_TRUE(model_->flushNow(10s)); // no event loop runs in between
    EXPECT_EQ(storedCount(today), 7);
    EXPECT_EQ(storedCount(tomorrow), 4);
    EXPECT_THAT(storedHours(today), ElementsAre(HourlyCountRow{today, 23, 7}));
    EXPECT_THAT(storedHours(tomorrow), ElementsAre(HourlyCountRow{tomorrow, 0, 4}));
    DailyCountsStore store(DailyCountsStore::urlForAccount("ana@example.com"));
    EXPECT_THAT(await(store.fetchAppHourlyCounts(today)),
                ElementsAre(AppHourlyCountRow{today, 23, "org.a", 7}));
    EXPECT_THAT(await(store.fetchAppHourlyCounts(tomorrow)),
                ElementsAre(AppHourlyCountRow{tomorrow, 0, "org.a", 4}));

    press(1);
    EXPECT_TRUE(model_->flushNow(10s)); // the session's end was called off
    EXPECT_EQ(storedCount(tomorrow), 5);
}

} // namespace
} // namespace fernhollow::tests
