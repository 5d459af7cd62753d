#include "Support/Observable.h"
#include "Support/SerialExecutor.h"
#include "Support/Sleep.h"
#include "Support/TaskScope.h"
#include "Support/Testing.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <thread>

namespace fernhollow::tests {
namespace {

QCoro::Task<> note(std::vector<std::string>& notes, std::string text) {
    notes.push_back(std::move(text));
    co_return;
}

QCoro::Task<> failing() {
    throw std::runtime_error("out of luck");
    co_return;
}

QCoro::Task<> sleepInALoop(FakeClock& clock, std::vector<std::string>& notes, std::stop_token stop) {
    while (co_await Sleep(clock, 1s, stop)) {
        notes.emplace_back("awake");
    }
    notes.emplace_back("ended");
}

TEST(Tasks, BeginInOrderAfterTheHandlerReturns) {
    const TemporaryHome home;
    std::vector<std::string> notes;
    TaskScope tasks;
    tasks.start([&] { return note(notes, "first"); });
    tasks.start([] { return failing(); });
    tasks.start([&] { return note(notes, "second"); });
    EXPECT_THAT(notes, IsEmpty());
    QCoreApplication::processEvents();
    EXPECT_THAT(notes, ElementsAre("first", "second"));
    EXPECT_THAT(home.log(), testing::HasSubstr("[Tasks] A background task failed: out of luck"));

    tasks.start([&] { return note(notes, "never"); });
    tasks.stop();
    QCoreApplication::processEvents();
    EXPECT_EQ(notes.size(), 2u);
}

TEST(Sleepers, WakeWhenTheirTimeHasPassedOrAtAStop) {
    FakeClock clock(Instant{});
    std::vector<std::string> notes;
    TaskScope tasks;
    std::stop_source stop;
    tasks.start([&] { return sleepInALoop(clock, notes, stop.get_token()); });
    tasks.beginWaiting();
    clock.set(Instant{} + 24h); // the wall clock moves no sleeper
    clock.advance(999ms);
    EXPECT_THAT(notes, IsEmpty());
    clock.advance(1ms);
    clock.advance(1s);
    EXPECT_THAT(notes, ElementsAre("awake", "awake"));
    stop.request_stop();
    EXPECT_EQ(notes.back(), "ended");
    EXPECT_EQ(clock.sleepers(), 0u);
}

TEST(SerialExecutors, WorkInOrderOnOneOtherThread) {
    SerialExecutor executor;
    std::vector<int> order; // touched by the executor's thread alone
    for (int i = 0; i < 100; ++i) {
        executor.run([&, i] { order.push_back(i); });
    }
    EXPECT_EQ(await(executor.run([&] { return order.size(); })), 100u);
    EXPECT_TRUE(std::ranges::is_sorted(order));
    EXPECT_NE(await(executor.run([] { return std::this_thread::get_id(); })), std::this_thread::get_id());
    EXPECT_THROW(await(executor.run([]() -> int { throw std::out_of_range("x"); })), std::out_of_range);
}

TEST(SerialExecutors, AreWaitedForWithAndWithoutALimit) {
    std::atomic<int> done = 0;
    {
        SerialExecutor executor;
        std::atomic<bool> mayGoOn = false;
        executor.run([&] {
            mayGoOn.wait(false);
            ++done;
        });
        EXPECT_FALSE(executor.waitUntilIdle(5ms));
        mayGoOn = true;
        mayGoOn.notify_all();
        EXPECT_TRUE(executor.waitUntilIdle(10s));
        executor.run([&] { ++done; });
    }
    EXPECT_EQ(done, 2);
}

TEST(PublishedFields, AnnounceRealChangesBeforeTheyHappen) {
    Observable owner;
    Published<int> field(owner, 1);
    std::vector<int> seen;
    auto first = field.observe([&] { seen.push_back(field.get()); });
    const auto second = owner.observe([&] { first = {}; }); // an observer may end another meanwhile
    field.set(1);
    EXPECT_THAT(seen, IsEmpty());
    field.set(2);
    field.change([](int& value) { ++value; });
    EXPECT_EQ(field.get(), 3);
    EXPECT_THAT(seen, IsEmpty());
    const auto third = field.observe([&] { seen.push_back(field.get()); });
    field.set(4);
    EXPECT_THAT(seen, ElementsAre(3));
}

} // namespace
} // namespace fernhollow::tests
