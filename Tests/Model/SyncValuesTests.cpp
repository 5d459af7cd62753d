// What the engine decides from: the days that wait, what was sent, and how long it keeps still.

#include "KeypressCore/CountLimits.h"
#include "Model/Sync/BackOff.h"
#include "Model/Sync/DayQueue.h"
#include "Model/Sync/FetchPlan.h"
#include "Model/Sync/SentDays.h"
#include "Support/FakeClock.h"

#include <gmock/gmock.h>

namespace fernhollow::tests {
namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

constexpr DayWork all = {.count = true, .hours = true, .apps = true};
const DayKey first{"2026-03-01"};
const DayKey second{"2026-03-02"};
const DayKey third{"2026-03-03"};
const DayKey yesterday{"2026-03-04"};
const DayKey today{"2026-03-05"};

TEST(DayQueue, PutsTodayFirstThenChangesThenSomeOfThePastThenLosses) {
    DayQueue queue;
    for (const auto& day : {first, second, third, yesterday}) {
        queue.addPast(day, {.count = true});
    }
    queue.add(today, all);
    queue.add(first, all);
    EXPECT_THAT(queue.begin(today, 2), ElementsAre(today, first, yesterday, third));
    for (const auto& day : {first, third}) {
        queue.done(day, all);
    }
    queue.lost(today, Moment(5s));
    queue.lost(yesterday, Moment(5s));
    EXPECT_THAT(queue.begin(today, 2), ElementsAre(today, second, yesterday));
}

TEST(DayQueue, KeepsWhatWasLostAndWhatChangedMeanwhile) {
    DayQueue queue;
    queue.add(today, all);
    queue.begin(today, 0);
    queue.done(today, {.count = true});
    queue.lost(today, Moment(5s));
    queue.begin(today, 0);
    EXPECT_EQ(queue.work(today), (DayWork{.hours = true, .apps = true})) << "the count was taken";
    queue.lost(today, Moment(9s));
    EXPECT_EQ(queue.lostSince(), Moment(5s));
    queue.add(today, all);
    queue.done(today, all);
    EXPECT_EQ(queue.lostSince(), std::nullopt);
    EXPECT_THAT(queue.begin(today, 0), ElementsAre(today)) << "it changed after the cycle had read it";
    queue.done(today, all);
    EXPECT_TRUE(queue.isEmpty());
}

TEST(SentDays, MergeADayUntilItWasSentAndThenTellForeignCounts) {
    using Kind = DayMerge::Kind;
    SentDays days;
    EXPECT_EQ(days.merge(today, 30, 120), (DayMerge{Kind::add, 150}));
    days.note(today, 150);
    days.note(today, 140);
    EXPECT_EQ(days.merge(today, 160, 150), (DayMerge{Kind::uploadLocal, 160}));
    EXPECT_EQ(days.merge(today, 160, 151), (DayMerge{Kind::foreign, 150})) << "whether it is more or less";
    EXPECT_EQ(days.merge(today, 4, 150), (DayMerge{Kind::add, 154})) << "the database was lost meanwhile";
    EXPECT_EQ(days.merge(today, 160, maximumDeviceDay + 1), (DayMerge{Kind::uploadLocal, 160}));
    EXPECT_EQ(days.merge(yesterday, 0, 120), (DayMerge{Kind::restore, 120}));
}

class FetchPlanning : public testing::Test {
protected:
    // What a cycle asks for after so long, and that it was answered.
    std::vector<Fetch> after(std::chrono::seconds time) {
        now_ += time;
        plan_.begin(now_);
        std::vector<Fetch> due;
        for (const Fetch fetch :
             {Fetch::total, Fetch::hours, Fetch::appHours, Fetch::days, Fetch::appDays, Fetch::devices}) {
            if (plan_.isDue(fetch, now_)) {
                due.push_back(fetch);
                plan_.noteFetched(fetch, now_);
            }
        }
        return due;
    }

    FetchPlan plan_;
    Moment now_{100s};
};

TEST_F(FetchPlanning, AsksForWhatCanHaveChanged) {
    using enum Fetch;
    EXPECT_THAT(after(0s), ElementsAre(total, hours, appHours, days, appDays, devices));
    plan_.noteTotal(7, 7, now_);
    EXPECT_THAT(after(1s), ElementsAre());
    EXPECT_THAT(after(1s), ElementsAre(total));
    plan_.noteActivity(now_);
    EXPECT_THAT(after(1s), ElementsAre(total));
    plan_.noteTotal(9, 9, now_); // all of it is from here
    EXPECT_THAT(after(1s), ElementsAre(total));
    plan_.noteTotal(12, 9, now_); // some of it is another machine's
    EXPECT_THAT(after(1s), ElementsAre(total, hours, appHours));
    plan_.noteTotal(14, 11, now_);
    EXPECT_THAT(after(1s), ElementsAre(total, hours, appHours));
    EXPECT_THAT(after(59s), ElementsAre(total, days, devices)) << "thirty days are not fetched each second";
    EXPECT_THAT(after(60s), ElementsAre(total, appDays, devices));
    plan_.noteNewDay();
    EXPECT_THAT(after(1s), ElementsAre(total, hours, appHours, days, appDays, devices));
}

TEST_F(FetchPlanning, LearnsFromTheDevicesThatAnotherOneWasThere) {
    using enum Fetch;
    after(0s);
    plan_.noteDevices({{"a", "here", "08:00"}, {"b", "there", "07:00"}}, "08:00", now_);
    plan_.noteDevices({{"a", "here", "09:00"}, {"b", "there", "07:00"}}, "09:00", now_);
    EXPECT_THAT(after(60s), ElementsAre(total, devices)) << "only this one was";
    plan_.noteDevices({{"a", "here", "09:00"}, {"b", "there", "09:01"}}, "09:00", now_);
    EXPECT_THAT(after(1s), ElementsAre(total, hours, appHours, days));
    EXPECT_THAT(after(2s), ElementsAre(total, appDays, devices)) << "and may be still";
}

TEST_F(FetchPlanning, AsksForFourThingsAtMostInAnIdleMinute) {
    after(0s);
    std::map<Fetch, int> fetched;
    for (int minute = 0; minute < 60; ++minute) {
        const auto due = after(60s);
        EXPECT_LE(due.size(), 3) << "and this device's registration";
        for (const Fetch fetch : due) {
            ++fetched[fetch];
        }
    }
    for (const Fetch list : {Fetch::hours, Fetch::appHours, Fetch::days, Fetch::appDays}) {
        EXPECT_GE(fetched[list], 3) << "to be safe";
    }
}

TEST(BackOff, DoublesUpToAMinuteAndIsNeverShorterThanAskedFor) {
    BackOff backOff;
    Moment now(100s);
    EXPECT_EQ(backOff.remaining(now), 0ms);
    for (const auto pause : {1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s}) {
        backOff.lengthen(now, 0s);
        EXPECT_EQ(backOff.remaining(now), pause);
        now += pause;
        EXPECT_EQ(backOff.remaining(now), 0ms);
    }
    backOff.end();
    backOff.lengthen(now, 90s);
    EXPECT_EQ(backOff.remaining(now), 90s);
    EXPECT_EQ(backOff.remaining(now + 89001ms), 999ms);
}

TEST(BackOff, ReadsHowLongToWait) {
    const Instant now = at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 9});
    const std::pair<const char*, std::chrono::seconds> fields[] = {
        {"120", 120s},
        {" 7 ", 7s},
        {"0", 0s},
        {"-5", 0s},
        {"99999999999999999999", 0s},
        {"999999999", 1h},
        {"Thu, 05 Mar 2026 09:02:00 GMT", 120s},
        {"Thu, 05 Mar 2026 08:59:00 GMT", 0s},
        {"Fri, 05 Mar 2027 09:00:00 GMT", 1h},
        {"soon", 0s},
        {"", 0s},
    };
    for (const auto& [field, pause] : fields) {
        EXPECT_EQ(retryAfter(field, now), pause) << field;
    }
}

} // namespace
} // namespace fernhollow::tests
