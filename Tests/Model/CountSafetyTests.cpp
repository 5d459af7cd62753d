// What was counted stays counted when its disk is full, or its file is damaged or goes away. Kills and power
// cuts are those of the lives in Tests/Endurance; locks are tested end to end.

#include "ModelFixture.h"
#include "Support/ForgetfulDisk.h"

#include <cstdint>
#include <fstream>
#include <stdexcept>

namespace fernhollow::tests {
namespace {

namespace fs = std::filesystem;
using testing::Each;

class CountSafety : public ModelFixture {
protected:
    CountSafety() { signIn("ana@example.com"); }
    ~CountSafety() override { shutDown(); } // before the disk

    fs::path file() { return DailyCountsStore::urlForAccount("ana@example.com"); }

    /// The presses of today as each of the three tables has them.
    std::vector<std::int64_t> stored() {
        DailyCountsStore store(file());
        std::int64_t hourly = 0, applications = 0;
        for (const auto& row : await(store.fetchHourlyCounts(today))) {
            hourly += row.count;
        }
        for (const auto& row : await(store.fetchAppHourlyCounts(today))) {
            applications += row.count;
        }
        return {await(store.count(today)), hourly, applications};
    }

    /// Ends the model as SIGKILL would end it: its files stay as they are at this moment.
    void kill() {
        tasks_.beginWaiting();
        await(model_->appTracker().refreshFromDisk()); // what was asked of the store is done
        const auto copy = home_.path() / "killed";
        std::error_code missing;
        for (const char* suffix : {"", "-wal"}) {
            fs::copy_file(file().native() + suffix, copy.native() + suffix, missing);
        }
        shutDown();
        for (const char* suffix : {"", "-wal"}) {
            fs::remove(file().native() + suffix);
            fs::rename(copy.native() + suffix, file().native() + suffix, missing);
        }
    }

    ForgetfulDisk disk_;
};

TEST_F(CountSafety, SyncsOnceAFlushAndNeverAtAPress) {
    start();
    press(200);
    flush();
    for (int round = 0; round < 3; ++round) {
        const int before = disk_.syncs(".sqlite-wal");
        press(200, round % 2 == 0 ? "org.a" : "org.b");
        refresh();
        EXPECT_EQ(disk_.syncs(".sqlite-wal"), before);
        flush();
        EXPECT_EQ(disk_.syncs(".sqlite-wal"), before + 1);
    }
    EXPECT_THAT(stored(), Each(800));
}

TEST_F(CountSafety, AFullDiskCostsNothing) {
    start();
    press(500);
    flush();
    disk_.setFull(true);
    for (int turn = 0; turn < 22; ++turn) {
        press(100);
        clock_.advance(1s);
        tasks_.beginWaiting();
        refresh();
    }
    flush();
    EXPECT_FALSE(model_->areCountsSaved.get());
    disk_.setFull(false);
    flush();
    flush();
    EXPECT_TRUE(model_->areCountsSaved.get());
    EXPECT_THAT(stored(), Each(2'700));
}

TEST_F(CountSafety, ADatabaseThatIsDamagedWhileItRunsIsSetAsideAndReplaced) {
    start();
    press(3);
    flush();
    // Makes the model read the file anew, and not its log.
    {
        const OtherConnection other(
            "INSERT INTO daily_counts VALUES ('2026-01-01', 1, 1); PRAGMA wal_checkpoint(TRUNCATE)");
    }
    {
        std::fstream damaged(file(), std::ios::in | std::ios::out | std::ios::binary);
        damaged.seekp(4'096);
        damaged << std::string(16'000, 'x');
    }
    press(4);
    flush();
    press(5);
    flush();
    EXPECT_THAT(stored(), Each(9));
    EXPECT_TRUE(fs::exists(file().native() + ".unreadable-2026-03-05"));
}

class LosingTheFile : public CountSafety, public testing::WithParamInterface<int> {
protected:
    void lose() {
        if (GetParam() == 0) {
            for (const char* suffix : {"", "-wal", "-shm"}) {
                fs::remove(file().native() + suffix);
            }
        } else if (GetParam() == 1) { // its companions stay
            fs::remove(file());
        } else if (GetParam() == 2) {
            fs::rename(file(), home_.path() / "elsewhere.sqlite");
        } else { // another one in its place
            const auto other = home_.path() / "other.sqlite";
            {
                DailyCountsStore store(other);
                await(store.write({.days = {{today, 100}},
                                   .hours = {{{today, 8}, 100}},
                                   .applications = {{{today, 8, "org.a"}, 100}},
                                   .names = {}},
                                  1));
            }
            fs::rename(other, file());
        }
    }
};

// What is gone with the file is gone; nothing that came after the last flush is.
TEST_P(LosingTheFile, CountsIntoAFileThatExists) {
    start();
    press(10);
    flush();
    press(7);
    clock_.advance(1s); // the hours and the applications are in the old file
    tasks_.beginWaiting();
    refresh();
    lose();
    const std::int64_t expected = GetParam() == 3 ? 112 : 12;
    press(3);
    flush();
    press(2);
    flush();
    EXPECT_THAT(stored(), Each(expected));
    EXPECT_THAT(home_.log(), HasSubstr(" was moved or deleted; counting goes on in another one\n"));
    shutDown();
    start();
    flush();
    EXPECT_THAT(stored(), Each(expected));
}

TEST_P(LosingTheFile, IsNoticedWithTheNextPress) {
    start();
    press(10);
    flush();
    lose();
    press(3);
    tasks_.beginWaiting();
    refresh();
    kill(); // with no flush in between
    EXPECT_THAT(stored(), Each(GetParam() == 3 ? 103 : 3));
}

constexpr const char* waysToLoseTheFile[] = {"DeletedWhole", "DeletedAlone", "Moved", "Replaced"};
INSTANTIATE_TEST_SUITE_P(Ways, LosingTheFile, testing::Range(0, 4),
                         [](const auto& info) { return std::string(waysToLoseTheFile[info.index]); });

TEST_F(CountSafety, ALogThatWasDeletedTakesNothingWithIt) {
    start();
    press(10);
    tasks_.beginWaiting();
    fs::remove(file().native() + "-wal");
    flush();
    kill();
    EXPECT_THAT(stored(), Each(10));
}

TEST_F(CountSafety, AFailureInOneTurnOfTheLoopsIsNotTheLastTurn) {
    start();
    bool fails = true;
    const auto observation = model_->todayCount.observe([&] {
        if (fails) {
            throw std::runtime_error("unexpected");
        }
    });
    {
        DailyCountsStore store(file());
        await(store.increment(today, 40, 1));
    }
    for (int second = 0; second < 16; ++second) {
        clock_.advance(1s);
        EXPECT_TRUE(waitUntil([&] { return clock_.sleepers() == 2; }));
    }
    EXPECT_THAT(home_.log(), HasSubstr("[AppModel] A refresh failed: unexpected\n"));
    fails = false;
    clock_.advance(1s);
    EXPECT_TRUE(waitUntil([&] { return model_->todayCount.get() == 40; }));
}

} // namespace
} // namespace fernhollow::tests
