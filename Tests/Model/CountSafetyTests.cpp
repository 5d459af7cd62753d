// What was counted stays counted: power cuts, kills, full disks, locks, files that go away.

#include "Support/ForgetfulDisk.h"
#include "SyncFixture.h"

#include <cstdint>
#include <fstream>
#include <stdexcept>

namespace fernhollow::tests {
namespace {

namespace fs = std::filesystem;

/// One day's presses as the three tables have them.
struct Tables {
    std::int64_t daily = 0;
    std::int64_t hourly = 0;
    std::int64_t applications = 0;
    bool operator==(const Tables&) const = default;
};

void PrintTo(const Tables& tables, std::ostream* out) {
    *out << tables.daily << " a day, " << tables.hourly << " by the hour, " << tables.applications
         << " by application";
}

class CountSafety : public SyncFixture {
protected:
    ~CountSafety() override { shutDown(); } // before the disk

    fs::path file() { return DailyCountsStore::urlForAccount("ana@example.com"); }

    Tables stored() {
        DailyCountsStore store(file());
        Tables tables{.daily = await(store.count(today))};
        for (const auto& row : await(store.fetchHourlyCounts(today))) {
            tables.hourly += row.count;
        }
        for (const auto& row : await(store.fetchAppHourlyCounts(today))) {
            tables.applications += row.count;
        }
        return tables;
    }

    static Tables all(std::int64_t presses) { return {presses, presses, presses}; }

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
    EXPECT_EQ(stored(), all(800));
}

TEST_F(CountSafety, TheBackendNeverKnowsMoreThanTheDiskAfterAPowerCut) {
    std::map<std::string, std::int64_t> server; // what it was last told, by table
    const auto answer = server_.answer;
    server_.answer = [&](const Request& request) {
        const auto body = request.method == "POST" ? request.json() : nlohmann::json();
        if (body.contains("count")) {
            const auto path = request.path.substr(0, request.path.find('?'));
            server[path.substr(path.rfind('/') + 1)] = body.at("count").get<std::int64_t>();
        }
        return answer(request);
    };
    startModel();
    std::int64_t typed = 0;
    for (int cycle = 0; cycle < 40; ++cycle) { // with a flush in between, each 15 seconds
        press(7);
        typed += 7;
        pass(1s);
    }
    EXPECT_GT(server["device_day_counts"], typed / 2);
    EXPECT_GT(server["device_hour_counts"], typed / 2);
    disk_.cutPower();
    shutDown();
    disk_.restorePower();

    const Tables disk = stored();
    EXPECT_GE(disk.daily, server["device_day_counts"]);
    EXPECT_GE(disk.hourly, server["device_hour_counts"]);
    EXPECT_GE(disk.applications, server["device_app_hour_counts"]);
    EXPECT_GE(disk.daily, typed - std::int64_t{15} * 7) << "at most a flush's presses are lost";
}

TEST_F(CountSafety, AKillCostsNoPressOfTheDay) {
    start();
    for (int second = 0; second < 7; ++second) {
        clock_.advance(1s);
        press(300);
        tasks_.beginWaiting();
        refresh();
    }
    kill();
    const Tables killed = stored();
    EXPECT_EQ(killed.hourly, 2'100);
    EXPECT_GE(killed.applications, 1'800) << "at most a second's";
    start();
    flush();
    EXPECT_EQ(stored().daily, 2'100);
    EXPECT_EQ(model_->todayCount.get(), 2'100);
    press(5);
    flush();
    shutDown();
    start(); // nothing is made up for twice
    flush();
    EXPECT_EQ(stored().daily, 2'105);
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
    EXPECT_EQ(stored(), all(2'700));
    EXPECT_EQ(model_->appTracker().todayAppTotals.get().front().count, 2'700);
}

TEST_F(CountSafety, ADatabaseThatIsLockedAtTheStartIsOpenedWithAFlush) {
    {
        start();
        press(10);
        flush();
        shutDown();
    }
    std::optional<OtherConnection> other("PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; CREATE TABLE x(y)");
    start();
    press(30);
    flush();
    EXPECT_FALSE(model_->areCountsSaved.get());
    clock_.set(at("UTC", {.year = 2026, .month = 3, .day = 6}));
    press(4);
    flush();
    other.reset();
    press(2);
    flush();
    EXPECT_EQ(stored(), all(40));
    EXPECT_EQ(storedCount(tomorrow), 6);
    EXPECT_TRUE(model_->areCountsSaved.get());
    EXPECT_THAT(home_.log(), HasSubstr("[AppModel] Failed to create account-specific store: SQLiteError(5): "
                                       "database is locked\n"));
}

TEST_F(CountSafety, AFileThatIsNoDatabaseIsSetAsideAndReplaced) {
    const std::string text(3'000, 'x');
    std::ofstream(file()) << text;
    start();
    press(3);
    flush();
    EXPECT_EQ(stored(), all(3));
    EXPECT_EQ(contents(file().native() + ".unreadable-2026-03-05"), text);
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
    EXPECT_EQ(stored(), all(9));
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
    EXPECT_EQ(stored(), all(expected));
    EXPECT_THAT(home_.log(), HasSubstr(" was moved or deleted; counting goes on in another one\n"));
    shutDown();
    start();
    flush();
    EXPECT_EQ(stored(), all(expected));
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
    EXPECT_EQ(stored(), all(GetParam() == 3 ? 103 : 3));
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
    EXPECT_EQ(stored(), all(10));
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
