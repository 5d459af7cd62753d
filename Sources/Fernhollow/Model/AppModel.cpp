// How the model is built, follows the account and runs the keyboard monitor.

#include "Model/AppModel.h"

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AccountManager.h"
#include "Support/DebugLog.h"
#include "Support/TaskScope.h"

#include <QCoreApplication>

#include <exception>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// For another process's short transaction at the moment of the start.
constexpr auto openingPatience = 500ms;

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
    cancellables_.push_back(appTracker_->observe([weak] {
        if (const auto self = weak.lock()) {
            self->announceChange();
        }
    }));
    cancellables_.push_back(appTracker_->todayAppTotals.observe([weak] {
        if (const auto self = weak.lock()) {
            self->appHistoryInputs_.reset();
        }
    }));
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
    pending_ = 0;
    missing_ = {};
    written_ = {};
    completesDays_ = false; // what the change of account discarded is not brought back by a second one
    openingFailure_.clear();
    areCountsSaved.set(true);
    localTodayCount_ = 0;
    todayCount.set(0);
    todayCountAggregated.set(0);
    last30Days.set({});
    shownHistory_.reset();
    metrics.set(std::nullopt);
    appHistoryInputs_.reset();
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
