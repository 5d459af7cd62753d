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
/// The program is the real model with its store, tracker and sync engine, all on the life's thread except
/// for the stores' own threads. Machines take turns: each operation first makes this machine the current
/// one, with its home, zone and disk. It ends when the machine is settled, so that only sleeps are under
/// way.
class Machine {
public:
    Machine(int number, std::filesystem::path home, Backend& backend, Instant now);
    ~Machine();

    const int number;
    std::string zone = "Europe/Berlin";

    bool isRunning() const { return run_ != nullptr; }
    void start(const std::string& email); ///< signs in unless the settings have a session
    void end();                           ///< as at the end of the desktop session
    void kill();
    void cutPower();

    /// Runs until the life's clock shows `now`; a machine that sleeps does nothing.
    void passTo(Instant now, bool isAsleep = false);
    void pass(std::chrono::milliseconds time);
    /// Makes presses in an application, or in the program's own windows.
    void press(const std::string& app, std::int64_t count);
    /// Does pass() and then press(), but leaves the last turns unfinished, as when a machine fails.
    void beginToPress(std::chrono::milliseconds time, const std::string& app, std::int64_t count);
    /// Sets the wall clock wrong by this much from now on.
    void setSkew(std::chrono::seconds skew);
    void setDiskFull(bool isFull);
    void signIn(const std::string& email);
    void deleteDatabase();
    void loseSettings();

    /// For a machine that does not run: copies its home, or replaces it by a copy.
    void copyHomeTo(const std::filesystem::path& copy) const;
    void replaceHome(const std::filesystem::path& copy);

    /// The rows of the current account from this day on; only for a running machine.
    Rows rows(const std::string& firstDay);
    std::string day();
    /// Today's presses as the status item shows them; only for a running machine.
    std::int64_t shown() const { return run_->model->todayCount.get(); }
    std::string email() const { return email_; }
    std::string device() const { return device_; }
    std::string log() const { return contents(home_ / "fernhollow_debug.log"); }

    /// The tallies by account and identity, including former ones.
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
    Instant now_; // the life's time at the last turn
    bool isDiskFull_ = false;
    std::unique_ptr<Run> run_;
};

} // namespace fernhollow::tests
