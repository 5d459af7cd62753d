#include "Updates/Updater.h"

#include "Support/DebugLog.h"
#include "Updates/UpdatePreferences.h"

#include <cstdint>
#include <exception>
#include <system_error>
#include <utility>

namespace fernhollow {
namespace {

constexpr const char* offNote = "This build does not look for updates.";

void throwIfStopped(const std::stop_source& stop) {
    if (stop.stop_requested()) {
        throw UpdateError(UpdateError::Reason::cancelled, "The update was cancelled.");
    }
}

// The caller that cancels a cycle is called back about its end before the cycle's last step has returned.
std::function<void()> makeCancel(std::stop_source stop) {
    return [stop = std::move(stop)]() mutable { stop.request_stop(); };
}

} // namespace

Updater::Updater(std::string currentVersion, const std::optional<UpdateConfiguration>& configuration,
                 Surroundings surroundings, UpdaterDelegate& delegate, UserDriverDelegate& userDriverDelegate)
    : currentVersion_(std::move(currentVersion)), surroundings_(std::move(surroundings)), delegate_(delegate),
      userDriverDelegate_(userDriverDelegate) {
    if (configuration) {
        const auto askNow = [this] { tasks_.start([self = shared_from_this()] { return ask(self); }); };
        schedule_.emplace(
            surroundings_.clock, configuration->checkInterval,
            UpdateSchedule::Actions{.ask = askNow, .check = [this] { return beginScheduled(); }});
        canCheckForUpdates.set(true);
    }
}

void Updater::start() {
    if (schedule_) {
        surroundings_.source->removeLeftovers();
        schedule_->start();
    }
}

void Updater::stop() {
    isStopped_ = true;
    tasks_.stop();
    if (schedule_) {
        schedule_->stop();
    }
    if (const SharedCycle cycle = cycle_) {
        cycle->stop.request_stop();
    }
    surroundings_.driver->dismiss();
}

QCoro::Task<> Updater::ask(Self self) {
    if (self->cycle_) { // the person is looking for updates now and is asked at the next start
        co_return;
    }
    self->isAsking_ = true;
    const std::optional<bool> isAllowed = co_await self->surroundings_.driver->askPermission();
    self->isAsking_ = false;
    if (isAllowed && !self->isStopped_) { // without an answer the next start asks again
        self->surroundings_.driver->dismiss();
        self->schedule_->permit(*isAllowed);
    }
}

void Updater::checkForUpdates() {
    if (!schedule_) {
        surroundings_.driver->showNote(offNote);
        delegate_.didFinishUpdateCycleFor(UpdateCheck::userInitiated, std::nullopt);
    } else if (cycle_) {
        comeForward(cycle_);
    } else {
        if (isAsking_) {
            surroundings_.driver->dismiss();
        }
        begin(UpdateCheck::userInitiated);
    }
}

// The caller may have announced a check of its own, so the delegate is told again how far this one is.
void Updater::comeForward(const SharedCycle& cycle) {
    const bool wasScheduled =
        std::exchange(cycle->check, UpdateCheck::userInitiated) == UpdateCheck::scheduled;
    UserDriver& driver = *surroundings_.driver;
    if (cycle->phase == Phase::checking && wasScheduled) {
        driver.showChecking(makeCancel(cycle->stop));
        return;
    }
    driver.focus();
    switch (cycle->phase) {
    case Phase::checking:
        break;
    case Phase::offering:
        delegate_.didFindValidUpdate(*cycle->item);
        break;
    case Phase::downloading:
        delegate_.willDownloadUpdate(*cycle->item);
        break;
    case Phase::ready:
    case Phase::installing:
        delegate_.didDownloadUpdate(*cycle->item);
        break;
    }
}

bool Updater::beginScheduled() {
    if (!cycle_ && !isAsking_) {
        begin(UpdateCheck::scheduled);
        return true;
    }
    // An offer that the person has not opened since the last check may be out of date. It ends, so
    // that the next check, which comes soon, can begin.
    if (const SharedCycle cycle = cycle_;
        cycle && cycle->check == UpdateCheck::scheduled && cycle->phase == Phase::offering) {
        cycle->stop.request_stop();
        surroundings_.driver->dismiss();
    }
    return false;
}

void Updater::begin(UpdateCheck check) {
    cycle_ = std::make_shared<Cycle>(check);
    canCheckForUpdates.set(false);
    schedule_->noteCheck();
    delegate_.mayPerform(check);
    if (check == UpdateCheck::userInitiated) {
        surroundings_.driver->showChecking(makeCancel(cycle_->stop));
    }
    tasks_.start([self = shared_from_this(), cycle = cycle_] { return run(self, cycle); });
}

QCoro::Task<> Updater::run(Self self, SharedCycle cycle) {
    std::optional<UpdateError> failure;
    try {
        co_await perform(self, cycle);
    } catch (const UpdateError& error) {
        failure = error;
    } catch (const std::exception& error) { // without this the cycle would never end
        debugLog(std::string("[Updater] Unexpected: ") + error.what());
        failure.emplace(UpdateError::Reason::feed, error.what());
    }
    if (!self->isStopped_) {
        self->finish(*cycle, failure);
    }
}

QCoro::Task<> Updater::perform(Self self, SharedCycle cycle) {
    throwIfStopped(cycle->stop);
    cycle->item = co_await self->surroundings_.source->newest(cycle->stop.get_token());
    throwIfStopped(cycle->stop);
    if (!cycle->item || self->isPassedOver(*cycle)) {
        self->reportNothingNew(*cycle);
        co_return;
    }
    self->delegate_.didFindValidUpdate(*cycle->item);
    if (self->isDownloaded(*cycle->item)) {
        self->delegate_.didDownloadUpdate(*cycle->item);
        if (cycle->check == UpdateCheck::scheduled) { // the person put this release off before
            co_return;
        }
    } else {
        self->downloaded_.reset();
        if (!co_await offer(self, cycle)) {
            co_return;
        }
        co_await download(self, cycle);
    }
    co_await install(self, cycle);
}

void Updater::reportNothingNew(const Cycle& cycle) {
    delegate_.updaterDidNotFindUpdate("Fernhollow is up to date.");
    if (cycle.check == UpdateCheck::userInitiated) {
        surroundings_.driver->showUpToDate(currentVersion_);
    }
}

QCoro::Task<bool> Updater::offer(Self self, SharedCycle cycle) {
    UserDriver& driver = *self->surroundings_.driver;
    const AppcastItem item = *cycle->item;
    const bool canInstall = self->surroundings_.installer->canInstall();
    const bool isGentle = cycle->check == UpdateCheck::scheduled &&
                          self->userDriverDelegate_.supportsGentleScheduledUpdateReminders();
    cycle->phase = Phase::offering;
    self->userDriverDelegate_.standardUserDriverWillHandleShowingUpdate(true, item);
    const UpdateChoice choice = co_await driver.showUpdateFound(item, canInstall, isGentle);
    throwIfStopped(cycle->stop);
    if (choice == UpdateChoice::skip) {
        UpdatePreferences::setSkippedVersion(item.version);
    }
    if (choice != UpdateChoice::install || !canInstall) {
        driver.dismiss();
        co_return false;
    }
    co_return true;
}

QCoro::Task<> Updater::download(Self self, SharedCycle cycle) {
    const std::shared_ptr<UserDriver> driver = self->surroundings_.driver;
    const AppcastItem item = *cycle->item;
    cycle->phase = Phase::downloading;
    self->delegate_.willDownloadUpdate(item);
    driver->showDownloading(item, makeCancel(cycle->stop));
    UpdateTransfer::Progress progress = [driver](std::uint64_t received, std::uint64_t expected) {
        driver->showProgress(received, expected);
    };
    auto package =
        co_await self->surroundings_.source->package(item, std::move(progress), cycle->stop.get_token());
    throwIfStopped(cycle->stop);
    self->downloaded_ = std::move(package);
    self->delegate_.didDownloadUpdate(item);
}

QCoro::Task<> Updater::install(Self self, SharedCycle cycle) {
    UserDriver& driver = *self->surroundings_.driver;
    UpdateInstaller& installer = *self->surroundings_.installer;
    const AppcastItem item = *cycle->item;
    cycle->phase = Phase::ready;
    const UpdateChoice choice = co_await driver.showReadyToInstall(item);
    throwIfStopped(cycle->stop);
    if (choice != UpdateChoice::install) {
        driver.dismiss();
        co_return;
    }
    cycle->phase = Phase::installing;
    self->delegate_.willInstallUpdate(item);
    driver.showInstalling(item);
    // Whether or not the installation succeeds, this file is not used twice.
    auto package = std::exchange(self->downloaded_, nullptr);
    const auto outcome = co_await installer.install(std::move(package));
    throwIfStopped(cycle->stop);
    cycle->endsProgram = outcome == UpdateInstaller::Outcome::relaunch;
    if (const std::string note = installer.handOverNote(); !cycle->endsProgram && !note.empty()) {
        driver.showNote(note);
    } else {
        driver.dismiss();
    }
}

void Updater::finish(Cycle& cycle, const std::optional<UpdateError>& failure) {
    cycle_.reset();
    if (failure) {
        reportFailure(cycle, *failure);
    } else {
        delegate_.didFinishUpdateCycleFor(cycle.check, std::nullopt);
    }
    canCheckForUpdates.set(true);
    if (cycle.endsProgram) {
        surroundings_.installer->relaunch();
        surroundings_.quit();
    }
}

void Updater::reportFailure(const Cycle& cycle, const UpdateError& failure) {
    const bool isCancelled = failure.reason() == UpdateError::Reason::cancelled;
    const std::string description = failure.what();
    const auto error = isCancelled ? std::nullopt : std::optional(description);
    const auto report = [&] {
        if (error) {
            delegate_.didAbortWithError(*error);
        }
        delegate_.didFinishUpdateCycleFor(cycle.check, error);
    };
    report();
    const bool isBeyondOffer = cycle.phase != Phase::checking && cycle.phase != Phase::offering;
    if (isBeyondOffer) {
        // A delegate that was told of a download treats the end of checking as past and would wait for ever.
        // So the end is reported as the outcome of a new check.
        delegate_.mayPerform(cycle.check);
        report();
    }
    if (isCancelled) {
        surroundings_.driver->dismiss();
    } else if (isBeyondOffer || cycle.check == UpdateCheck::userInitiated) {
        surroundings_.driver->showError(description);
    }
}

// A person who asks for a check is offered even a release that they skipped.
bool Updater::isPassedOver(const Cycle& cycle) const {
    return cycle.check == UpdateCheck::scheduled &&
           UpdatePreferences::skippedVersion() == cycle.item->version;
}

bool Updater::isDownloaded(const AppcastItem& item) const {
    std::error_code error;
    return downloaded_ && downloaded_->item() == item && std::filesystem::exists(downloaded_->file(), error);
}

} // namespace fernhollow
