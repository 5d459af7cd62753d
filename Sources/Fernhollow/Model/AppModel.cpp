// How the model is built, follows the account with its store, and runs the keyboard monitor.

#include "Model/AppModel.h"

#include "KeypressCore/DailyCountsStore.h"
#include "Model/AccountManager.h"
#include "Support/DebugLog.h"
#include "Support/TaskScope.h"

#include <QCoreApplication>

#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// For another process's short transaction at the moment of the start.
constexpr auto openingPatience = 500ms;

// Likewise at the moment at which a store has to be replaced.
constexpr auto replacingPatience = 500ms;

} // namespace

std::shared_ptr<AppModel> AppModel::create(Surroundings surroundings,
                                           const KeyPressMonitor::Factory& makeMonitor,
                                           CloudSyncCoordinator::Factory makeSync) {
    std::shared_ptr<AppModel> model(new AppModel(surroundings, std::move(makeSync)));
    model->begin(makeMonitor);
    return model;
}

AppModel::AppModel(Surroundings surroundings, CloudSyncCoordinator::Factory makeSync)
    : clock_(surroundings.clock), tasks_(surroundings.tasks), account_(surroundings.account),
      currentDay_(clock_.now(), calendar_), currentAccountEmail_(account_.email()),
      identity_(std::move(surroundings.machine)), makeSync_(std::move(makeSync)) {}

AppModel::~AppModel() {
    stopLoops();
}

void AppModel::begin(const KeyPressMonitor::Factory& makeMonitor) {
    const auto weak = weak_from_this();
    if (!currentAccountEmail_) {
        debugLog("[AppModel] No account logged in - store is nil");
    } else if (openStore(openingPatience)) {
        debugLog("[AppModel] Initialized with account-specific store for: " + *currentAccountEmail_);
    }
    appTracker_ = AppTracker::create(clock_, tasks_, store_);
    observeApplications();
    keyboardMonitor_ = makeMonitor({.onKeyPress =
                                        [weak](const ActiveAppInfo& appInfo) {
                                            if (const auto self = weak.lock()) {
                                                self->recordKeypresses(1, appInfo);
                                            }
                                        },
                                    .onStopped =
                                        [weak] {
                                            if (const auto self = weak.lock()) {
                                                self->isKeyboardMonitorRunning_ = false;
                                            }
                                        }});
    account_.onAccountChange = [weak, &tasks = tasks_](const std::optional<std::string>& newEmail) {
        tasks.start([weak, newEmail] {
            if (const auto self = weak.lock()) {
                self->handleAccountChange(newEmail);
            }
            return noTask();
        });
    };
    refreshKeyboardMonitorState();
    startFlushLoop();
    startRefreshLoop();
    tasks_.start([self = shared_from_this()] { return self->refreshFromDisk(); });
}

void AppModel::observeApplications() {
    cancellables_.push_back(appTracker_->observe([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->announceChange();
        }
    }));
    cancellables_.push_back(appTracker_->todayAppTotals.observe([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->appHistoryInputs_.reset();
        }
    }));
}

bool AppModel::shutDown(std::chrono::milliseconds limit) {
    // A task under way waits for the store some few times; each turn ends one such wait.
    constexpr int turns = 8;
    bool isWritten = flushNow(limit); // first of all: a display that does not answer may hold up the rest
    stopLoops();
    if (const auto cloudSync = std::exchange(cloudSync_, nullptr)) {
        cloudSync->cancel();
    }
    for (int turn = 0; turn < turns && isWritten; ++turn) {
        isWritten = flushNow(limit);
        QCoreApplication::sendPostedEvents();
    }
    return isWritten;
}

void AppModel::stopLoops() {
    for (auto& loop : {std::exchange(flushTask_, {}), std::exchange(refreshTask_, {})}) {
        if (loop) {
            std::stop_source(*loop).request_stop();
        }
    }
    if (keyboardMonitor_) {
        keyboardMonitor_->stop();
    }
    isKeyboardMonitorRunning_ = false;
}

void AppModel::handleAccountChange(const std::optional<std::string>& newEmail) {
    if (newEmail == currentAccountEmail_) {
        debugLog("[AppModel] Account change skipped - same email");
        return;
    }
    debugLog("[AppModel] Account change: " + currentAccountEmail_.value_or("none") + " -> " +
             newEmail.value_or("none"));
    closeStore();
    forgetCounts();
    stores_.changeAccount();
    currentDay_ = DayKey(clock_.now(), calendar_);
    currentAccountEmail_ = newEmail;

    if (!newEmail) {
        appTracker_->updateStore(nullptr);
        debugLog("[AppModel] Cleared store on sign out");
    } else if (openStore(openingPatience)) {
        appTracker_->updateStore(store_);
        debugLog("[AppModel] Switched to account-specific store for: " + *newEmail);
        tasks_.start([self = shared_from_this()] { return self->refreshFromDisk(); });
    } else {
        appTracker_->updateStore(nullptr);
    }
    announceChange();
}

void AppModel::forgetCounts() {
    pending_ = {};
    areCountsSaved.set(true);
    localTodayCount_ = 0;
    todayCount.set(0);
    todayCountAggregated.set(0);
    last30Days.set({});
    shownHistory_.reset();
    metrics.set(std::nullopt);
    appHistoryInputs_.reset();
}

bool AppModel::openStore(std::chrono::milliseconds patience) {
    store_ = stores_.open(currentAccountEmail_.value(), identity_, patience, currentDay_);
    areCountsSaved.set(store_ != nullptr);
    if (store_ && makeSync_) {
        cloudSync_ =
            makeSync_(store_, account_, identity_.id(), [weak = weak_from_this(), id = identity_.id()] {
                if (const auto self = weak.lock()) {
                    self->takeNewIdentity(id);
                }
            });
    }
    return store_ != nullptr;
}

void AppModel::openMissingStore(std::chrono::milliseconds patience) {
    if (store_ || !currentAccountEmail_ || !openStore(patience)) {
        return;
    }
    debugLog("[AppModel] Initialized with account-specific store for: " + *currentAccountEmail_);
    appTracker_->continueWith(store_);
}

// The sync engine goes with the store: for a new one, a count of the backend that is above this machine's is
// nothing out of the ordinary.
void AppModel::replaceStore(Loss loss) {
    const auto url = store_->url();
    if (loss != Loss::identity) {
        debugLog("[AppModel] The database " + url.native() +
                 (loss == Loss::moved ? " was moved or deleted" : " became unreadable") +
                 "; counting goes on in another one");
    }
    pending_.loseFile(); // it would be lost with the file, or never be sent under the new identity
    appTracker_->giveBack(appTracker_->takeWritten());
    closeStore();
    appTracker_->continueWith(nullptr);
    if (loss == Loss::unreadable) {
        AccountStores::setUnreadableAside(url, currentDay_);
    }
    openMissingStore(replacingPatience);
}

void AppModel::takeNewIdentity(const std::string& inUse) {
    if (inUse != identity_.id()) {
        return; // it was reported twice
    }
    identity_.renew();
    if (store_) {
        replaceStore(Loss::identity);
    }
}

void AppModel::closeStore() {
    devicesAsked_.reset();
    if (const auto cloudSync = std::exchange(cloudSync_, nullptr)) {
        cloudSync->reset();
    }
    store_.reset();
}

void AppModel::refreshKeyboardMonitorState() {
    if (isPaused.get()) {
        if (isKeyboardMonitorRunning_) {
            debugLog("[AppModel] Stopping keyboard monitor (isPaused=true)");
            if (keyboardMonitor_) {
                keyboardMonitor_->stop();
            }
            isKeyboardMonitorRunning_ = false;
        }
        return;
    }
    if (isKeyboardMonitorRunning_) {
        return;
    }
    const bool isTriedAgain = isWaitingForMonitor_;
    if (!isTriedAgain) {
        debugLog("[AppModel] Starting keyboard monitor (isPaused=false)");
    }
    isKeyboardMonitorRunning_ = keyboardMonitor_ && keyboardMonitor_->start();
    isWaitingForMonitor_ = !isKeyboardMonitorRunning_;
    if (isKeyboardMonitorRunning_) {
        debugLog("[AppModel] Keyboard monitor started successfully");
    } else if (!isTriedAgain) {
        debugLog("[AppModel] Keyboard monitor failed to start - will retry on next refresh");
    }
}

} // namespace fernhollow
