#pragma once

#include "Support/Observable.h"
#include "Support/TaskScope.h"
#include "Updates/UpdateConfiguration.h"
#include "Updates/UpdateError.h"
#include "Updates/UpdateInstaller.h"
#include "Updates/UpdateSchedule.h"
#include "Updates/UpdateSource.h"
#include "Updates/UpdaterDelegate.h"
#include "Updates/UserDriver.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace fernhollow {

/// Updates the installed program, one cycle at a time: look, offer, download, install.
///
/// It shows nothing itself: releases come from an UpdateSource and go to an UpdateInstaller, and a UserDriver
/// shows the windows and returns the person's choices. Its delegate is told of each step; the last call of a
/// cycle is didFinishUpdateCycleFor. A download that the person puts off is kept for this run. Cycles are
/// coroutines that share ownership of the updater, so it lives in a shared_ptr and ends with stop(). Main
/// thread only.
class Updater : public Observable, public std::enable_shared_from_this<Updater> {
public:
    struct Surroundings {
        Clock& clock;
        std::shared_ptr<UpdateSource> source;       ///< absent without a configuration
        std::shared_ptr<UpdateInstaller> installer; ///< absent without a configuration
        std::shared_ptr<UserDriver> driver;
        std::function<void()> quit; ///< ends the program in good order, so that the new one can start
    };

    /// Without `configuration` it never looks for updates. The delegates live until stop().
    Updater(std::string currentVersion, const std::optional<UpdateConfiguration>& configuration,
            Surroundings surroundings, UpdaterDelegate& delegate, UserDriverDelegate& userDriverDelegate);

    Published<bool> canCheckForUpdates{*this};

    /// Begins the schedule. Called once.
    void start();

    /// Begins a check for the person. While a cycle runs, it brings that cycle's window to the front
    /// instead, and reports to the delegate once more how far the cycle is.
    void checkForUpdates();

    /// Ends the cycle under way, closes its window and makes no more calls to the delegates.
    void stop();

private:
    enum class Phase {
        checking,
        offering, ///< the person is asked about the release
        downloading,
        ready, ///< the person is asked about the verified package
        installing,
    };

    struct Cycle {
        explicit Cycle(UpdateCheck reason) : check(reason) {}

        UpdateCheck check; // a scheduled check becomes userInitiated when the person asks for one
        Phase phase = Phase::checking;
        std::optional<AppcastItem> item{};
        std::stop_source stop{};
        bool endsProgram = false;
    };
    using SharedCycle = std::shared_ptr<Cycle>;
    using Self = std::shared_ptr<Updater>;

    static QCoro::Task<> run(Self self, SharedCycle cycle);
    static QCoro::Task<> perform(Self self, SharedCycle cycle);
    static QCoro::Task<bool> offer(Self self, SharedCycle cycle);
    static QCoro::Task<> download(Self self, SharedCycle cycle);
    static QCoro::Task<> install(Self self, SharedCycle cycle);
    static QCoro::Task<> ask(Self self);

    void begin(UpdateCheck check);
    bool beginScheduled();
    void comeForward(const SharedCycle& cycle);
    void reportNothingNew(const Cycle& cycle);
    void finish(Cycle& cycle, const std::optional<UpdateError>& failure);
    void reportFailure(const Cycle& cycle, const UpdateError& failure);
    bool isPassedOver(const Cycle& cycle) const;
    bool isDownloaded(const AppcastItem& item) const;

    std::string currentVersion_;
    Surroundings surroundings_;
    UpdaterDelegate& delegate_;
    UserDriverDelegate& userDriverDelegate_;
    std::optional<UpdateSchedule> schedule_; // present with a configuration
    SharedCycle cycle_;                      // the cycle that runs; null without one
    std::shared_ptr<DownloadedUpdate> downloaded_;
    bool isAsking_ = false;
    bool isStopped_ = false;
    TaskScope tasks_;
};

} // namespace fernhollow
