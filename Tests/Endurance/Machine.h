#pragma once

#include "Endurance/Backend.h"
#include "Endurance/Tally.h"
#include "Model/AccountManager.h"
#include "Model/AppModel.h"
#include "Support/EventLoopExecutor.h"
#include "Support/FakeClock.h"
#include "Support/ForgetfulDisk.h"
#include "Support/HttpSession.h"
#include "Support/TaskScope.h"
#include "Support/TemporaryHome.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace fernhollow::tests {

/// One machine of a life: a home, a disk, a clock, and the program when it runs.
///
/// The program is the real model with its store, tracker and sync engine, all on the life's thread but for
/// the stores' own. Machines take turns: each operation first makes this machine the current one, with its
/// home, zone and disk, and leaves it settled, with nothing under way but sleeps.
class Machine {
public:
    Machine(int number, std::filesystem::path home, Backend& backend, Instant now);
    ~Machine();

    const int number;
    std::string zone = "Europe/Berlin";

    bool isRunning() const { return run_ != nullptr; }
    void start(const std::string& email); ///< signs in unless the settings say who is
    void end();                           ///< as at the end of the desktop session
    void kill();
    void cutPower();

    /// Until the life's clock shows `now`; a machine that is asleep does not notice.
    void passTo(Instant now, bool isAsleep = false);
    void pass(std::chrono::milliseconds time);
    /// Presses in an application, or in the program's own windows.
    void press(const std::string& app, std::int64_t count);
    /// As pass() and then press(), but for the turns that are left unfinished when a machine fails.
    void beginToPress(std::chrono::milliseconds time, const std::string& app, std::int64_t count);
    /// The wall clock is set wrong by this much from now on.
    void setSkew(std::chrono::seconds skew);
    void setDiskFull(bool isFull);
    void signIn(const std::string& email);
    void deleteDatabase();
    void loseSettings();

    /// Of a machine that does not run: a copy of its home, and the home replaced by one.
    void copyHomeTo(const std::filesystem::path& copy) const;
    void replaceHome(const std::filesystem::path& copy);

    /// What the tables of the current account hold from this day on; of a running machine.
    Rows rows(const std::string& firstDay);
    std::string day();
    /// Today's presses as the status item shows them; of a running machine.
    std::int64_t shown() const { return run_->model->todayCount.get(); }
    std::string email() const { return email_; }
    std::string device() const { return device_; }
    std::string log() const { return contents(home_ / "fernhollow_debug.log"); }

    /// The tallies by account and identity, those of the past included.
    std::map<std::pair<std::string, std::string>, Tally> tallies;
    Tally& tally() { return tallies[{email_, device_}]; }
    /// The identity and its database were left behind.
    void retireTallies();

private:
    struct Run {
        explicit Run(Instant now) : clock(now) {}
        FakeClock clock;
        TaskScope tasks;
        EventLoopExecutor executor;
        HttpSession session{clock};
        std::shared_ptr<AccountManager> account;
        std::weak_ptr<DailyCountsStore> store;
        KeyPressMonitor::Handlers handlers;
        std::shared_ptr<AppModel> model;
    };

    void enter();
    void settle();
    void tearDown();
    void feed(const std::string& app, std::int64_t count);
    std::shared_ptr<CloudSyncCoordinator> makeSync(std::shared_ptr<DailyCountsStore> store,
                                                   std::string deviceId,
                                                   std::function<void()> onIdentityInUseElsewhere);

    std::filesystem::path home_;
    Backend& backend_;
    ForgetfulDisk disk_;
    std::string mark_ = "machine " + std::to_string(number);
    std::string email_;
    std::string device_;
    std::chrono::seconds skew_{0};
    Instant now_; // the life's, as of the last turn
    bool isDiskFull_ = false;
    std::unique_ptr<Run> run_;
};

} // namespace fernhollow::tests
