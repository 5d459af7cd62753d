// What becomes of a day's count when the files that hold it and what was sent of it are lost, copied or
// restored.

#include "KeypressCore/DailyCountsDatabase.h"
#include "Model/Sync/SyncRules.h"
#include "Support/ForgetfulDisk.h"
#include "Support/TemporaryHome.h"

#include <gmock/gmock.h>

#include <sstream>

namespace fernhollow::tests {
namespace {

namespace fs = std::filesystem;

const DayKey today{"2026-03-05"};

/// One day of a machine and of a backend, played from a line of steps.
class Day {
public:
    explicit Day(const fs::path& folder) : file_(folder / "counts.sqlite"), backup_(folder / "backup") {
        fs::create_directories(backup_);
        open();
    }

    void play(const std::string& steps) {
        std::istringstream stream(steps);
        for (std::string step; stream >> step;) {
            take(step.front(), step.size() > 1 ? std::stoll(step.substr(1)) : 0);
        }
    }

    std::int64_t remote() const { return remote_; }
    std::int64_t local() { return database_->count(today); }

private:
    void open() {
        database_.reset();
        database_.emplace(file_, DatabaseOpening{.device = "device", .completesDays = true});
    }

    void take(char step, std::int64_t number) {
        const fs::path sent = SentCounts::fileOf(file_);
        switch (step) {
        case 't': // type
            database_->writeDurably({.days = {{today, number}}, .hours = {}, .applications = {}, .names = {}},
                                    1);
            return;
        case 'h': // type, and be killed before the flush
            database_->incrementHourly(today, 9, number, 1);
            return;
        case 's': // synchronise
            offer();
            remote_ = offered_;
            return;
        case 'o': // offer, and lose the power before the request
            offer();
            return;
        case 'x': // lose the power once a raise was announced
            SentCounts(file_, "device").announceRaise(today, number, 0);
            return;
        case 'z': // the backend forgets
            remote_ = 0;
            return;
        case 'r': // restart
            return open();
        default:
            database_.reset();
            handleFiles(step, sent);
            open();
        }
    }

    void handleFiles(char step, const fs::path& sent) {
        const auto copy = [](const fs::path& from, const fs::path& to) {
            fs::remove(to);
            fs::copy_file(from, to);
        };
        if (step == 'B') { // back up
            copy(file_, backup_ / file_.filename());
            copy(sent, backup_ / sent.filename());
        }
        if (step == 'D' || step == 'R') { // restore the database, or both
            copy(backup_ / file_.filename(), file_);
        }
        if (step == 'S' || step == 'R') { // restore what was sent, or both
            copy(backup_ / sent.filename(), sent);
        }
        if (step == 'd') { // lose the database
            fs::remove(file_);
        }
        if (step == 'l') { // lose what was sent
            fs::remove(sent);
        }
    }

    void offer() {
        const auto local = database_->count(today);
        const auto sent = database_->sentCount(today);
        const auto merge = sent ? DayMerge::since(*sent, local, remote_) : DayMerge::of(local, remote_);
        if (merge.count > local) {
            database_->raise(today, merge.count - local, 1);
        }
        database_->noteSent(today, merge.count);
        offered_ = merge.count;
    }

    ForgetfulDisk disk_; // the real one is slow to sync
    fs::path file_;
    fs::path backup_;
    std::optional<DailyCountsDatabase> database_;
    std::int64_t remote_ = 0;
    std::int64_t offered_ = 0;
};

struct Case {
    const char* name;
    const char* steps;
    std::int64_t count;
};

class SentCountsOfADay : public testing::TestWithParam<Case> {};

TEST_P(SentCountsOfADay, AddUpToWhatWasTyped) {
    const TemporaryHome home;
    Day day(home.path());
    day.play(GetParam().steps);
    EXPECT_EQ(day.remote(), GetParam().count);
    EXPECT_EQ(day.local(), GetParam().count);
    day.play("s r s");
    EXPECT_EQ(day.remote(), GetParam().count) << "once is enough";
}

INSTANTIATE_TEST_SUITE_P(
    , SentCountsOfADay,
    testing::Values(Case{"ordinary", "t300 s t50 r s t5 s", 355}, Case{"newMachine", "t300 s d l t50 s", 350},
                    Case{"databaseLost", "t300 s d t50 s", 350},
                    Case{"databaseLostAndOutgrown", "t347 s d t710 s", 1057},
                    Case{"databaseLostTwice", "t300 s d t50 s d t20 s", 370},
                    Case{"sentLost", "t300 s l t20 s", 320},
                    Case{"bothRestored", "t300 s B t270 s R t20 s", 590},
                    Case{"bothRestoredWithUnsent", "t250 s t57 B s t263 s R t13 r s", 583},
                    Case{"bothRestoredBeforeTheFirstSending", "t50 B s t70 s R t5 s", 125},
                    Case{"bothRestoredFromADayBefore", "o B t226 s R t586 s", 812},
                    Case{"copiedAndNobodyWentOn", "t250 s t57 B R t5 s", 312},
                    Case{"databaseRestored", "t300 s B t270 s D t20 s", 590},
                    Case{"databaseRestoredFromAKill", "t300 s h300 h7 B t270 s D t20 s", 597},
                    Case{"sentRestored", "t300 s B t270 s S t20 s", 590},
                    Case{"restoredTwice", "t300 s B t270 s R t20 s R t4 s", 594},
                    Case{"powerCutBeforeTheRequest", "t300 s t50 o r t5 s", 355},
                    Case{"powerCutInARaise", "t300 s d t50 x300 r s", 350},
                    Case{"backendReset", "t300 s z t10 s", 310}, Case{"bothReset", "t300 s d z t10 s", 310},
                    Case{"killAfterARaise", "h300 r s d h50 r s h7 r s", 357}),
    [](const auto& tested) { return tested.param.name; });

} // namespace
} // namespace fernhollow::tests
