#pragma once

#include "KeypressCore/Calendar.h"
#include "KeypressCore/CountBatch.h"
#include "KeypressCore/DayKey.h"
#include "Model/AccountFigures.h"
#include "Model/AccountStores.h"
#include "Model/AppTracker.h"
#include "Model/CloudSyncCoordinator.h"
#include "Model/DailyHistory.h"
#include "Model/DeviceIdentity.h"
#include "Model/KeyPressMonitor.h"
#include "Model/PendingCounts.h"
#include "Model/RecentDays.h"
#include "Support/Clock.h"
#include "Support/NumberText.h"
#include "Support/Observable.h"
#include "Support/RepeatedLog.h"

#include <qcorotask.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace fernhollow {

class AccountManager;
class DailyCountsStore;
class TaskScope;

/// The central counting model: takes presses, shows them at once, and sees that they reach the disk.
///
/// Each press is written to the hourly table straight away and, in batches every 15 seconds, to the
/// daily table; until then it is in `pending`. A flush is one transaction that is on the disk when it is
/// done; what a store did not take stays here for the next flush, and so does everything while the store of
/// the signed-in account cannot be opened. Every second the model looks for a new day, reads today's
/// count and the history again and merges them with what the sync engine knows of the account's other
/// machines. It owns the store and the sync engine of the signed-in account and changes them with the
/// account. Created once at start, main thread only; shut down before it is let go.
class AppModel : public Observable, public std::enable_shared_from_this<AppModel> {
public:
    /// What the model stands on; all of it outlives the model.
    struct Surroundings {
        Clock& clock;
        TaskScope& tasks;
        AccountManager& account;
        std::string machine = DeviceIdentity::machineMark();
    };

    /// Without `makeSync` nothing is exchanged with other machines.
    static std::shared_ptr<AppModel> create(Surroundings surroundings,
                                            const KeyPressMonitor::Factory& makeMonitor,
                                            CloudSyncCoordinator::Factory makeSync = {});
    ~AppModel();

    Published<std::int64_t> todayCount{*this};           ///< this device's presses today
    Published<std::int64_t> todayCountAggregated{*this}; ///< the account's presses today, over all devices
    Published<std::vector<DailyCountPoint>> last30Days{*this};    ///< oldest first, today last
    Published<std::optional<ProductivityMetrics>> metrics{*this}; ///< absent until the first refresh
    Published<bool> isPaused{*this};                              ///< while true, presses are not counted
    /// False from a flush that could not save what was counted until one that could. True while nobody is
    /// signed in: nothing is to be saved then.
    Published<bool> areCountsSaved{*this, true};
    /// False once counts have been waiting ten minutes for a backend that does not take them, until it does.
    Published<bool> areCountsSent{*this, true};

    AppTracker& appTracker() { return *appTracker_; }
    const AppTracker& appTracker() const { return *appTracker_; }

    /// Under which this machine is known to the account's other machines.
    const std::string& deviceId() const { return identity_.id(); }

    /// Today's count in the user's digits and grouping, for the status item.
    std::string menuBarTitle() const;
    /// The account's count of today, likewise.
    std::string todayCountFormatted() const;

    /// `count` presses in one application; less than one is none.
    void recordKeypresses(std::int64_t count, const ActiveAppInfo& appInfo);

    QCoro::Task<> flushPending();
    QCoro::Task<> refreshFromDisk();

    /// Goes on under another identity, because another machine sends counts under `inUse`. Nothing that was
    /// counted before is sent again. Does nothing when `inUse` is no longer this machine's identity.
    void takeNewIdentity(const std::string& inUse);

    /// Writes everything that is not on the disk yet and waits for it, at most `limit`; false when not
    /// all of it could be written. For the end of the program or of the desktop session: no event loop is
    /// needed.
    bool flushNow(std::chrono::milliseconds limit);

    /// Ends the loops and the monitoring, writes what is left and lets the tasks that are under way come
    /// to their end; false when not all of it could be written within `limit`.
    bool shutDown(std::chrono::milliseconds limit);

private:
    AppModel(Surroundings surroundings, CloudSyncCoordinator::Factory makeSync);

    void begin(const KeyPressMonitor::Factory& makeMonitor);
    void observeApplications();
    void stopLoops();
    void refreshKeyboardMonitorState();
    void handleAccountChange(const std::optional<std::string>& newEmail);
    void forgetCounts();
    bool openStore(std::chrono::milliseconds patience);
    void openMissingStore(std::chrono::milliseconds patience);
    /// Why a store cannot be gone on with: its file went away or cannot be read, or belongs to an identity
    /// that is no longer this machine's.
    enum class Loss { moved, unreadable, identity };
    void replaceStore(Loss loss);
    void closeStore();

    // Noticing a new day and reading again, in AppModelRefresh.cpp.
    bool rolloverIfNeeded(Instant now);
    void startRefreshLoop();
    QCoro::Task<> refreshTodayFromDisk();
    void showToday(std::optional<std::int64_t> remoteTotal);
    QCoro::Task<> refreshLast30DaysFromDisk();
    void logHistory(const DailyHistory& history, const std::vector<DailyCountPoint>& points);
    void followSending();
    bool isTimeForDevices() const;
    QCoro::Task<> refreshDevices();

    struct AppHistoryInputs {
        std::shared_ptr<const AppDailyCache> remote;
        Instant noon;

        bool operator==(const AppHistoryInputs&) const = default;
    };
    /// What a refresh asks for beside today's count, all of it before it waits.
    struct Reads {
        std::shared_ptr<DailyCountsStore> store;
        std::shared_ptr<CloudSyncCoordinator> cloudSync;
        DayKey day;
        Future<std::vector<HourlyCountRow>> hours;
        std::optional<Future<std::shared_ptr<const HistoryCache>>> history;
        std::optional<Future<std::shared_ptr<const HourlyCache>>> hourly;
        std::optional<Future<std::shared_ptr<const AppDailyCache>>> appDaily;
    };
    Reads askForFigures() const;
    QCoro::Task<> recalculateMetrics(Reads reads);
    QCoro::Task<> refreshAppHistory(Reads reads);

    static QCoro::Task<> refreshLoop(std::shared_ptr<AppModel> self, std::stop_token stop);

    // Presses on their way to the disk, in AppModelCounting.cpp.
    void startFlushLoop();
    static QCoro::Task<> flushLoop(std::shared_ptr<AppModel> self, std::stop_token stop);
    static QCoro::Task<> writeHourly(std::shared_ptr<AppModel> self, DayKey day, int hour,
                                     std::int64_t count);
    void noteHourlyFailure(const DailyCountsStore& store, const std::string& failure);
    struct Flush {
        std::shared_ptr<DailyCountsStore> store;
        CountBatch counts;  // to be written
        CountBatch written; // what went to the store before, and is on the disk with the flush
        std::optional<std::string> account;
    };
    Flush takeFlush();
    void giveBack(const Flush& flush, const std::string& failure);
    void noteSaved(const Flush& flush);
    bool hasUnwritten() const;
    void logUnwritten() const;
    enum class Attempt { first, second };
    static QCoro::Task<bool> write(std::shared_ptr<AppModel> self, Flush flush,
                                   Attempt attempt = Attempt::first);
    static QCoro::Task<> finishDay(std::shared_ptr<AppModel> self, Flush flush, DayKey day);

    Clock& clock_;
    TaskScope& tasks_;
    AccountManager& account_;
    Calendar calendar_ = Calendar::autoupdatingCurrent();
    NumberText numberText_;

    std::shared_ptr<AppTracker> appTracker_;
    std::shared_ptr<DailyCountsStore> store_;
    std::shared_ptr<CloudSyncCoordinator> cloudSync_; // present while a store is, unless there is no factory
    bool isAskingForDevices_ = false;
    std::optional<Instant> devicesAsked_; // of this engine
    std::unique_ptr<KeyPressMonitor> keyboardMonitor_;
    bool isKeyboardMonitorRunning_ = false;
    DayKey currentDay_;
    PendingCounts pending_;
    std::int64_t dailyWrites_ = 0; // since the start, to tell whether one began meanwhile
    std::int64_t localTodayCount_ = 0;
    RecentDays recentDays_;
    std::optional<DailyHistory> shownHistory_;
    AccountFigures shownFigures_;
    std::optional<AppHistoryInputs> appHistoryInputs_; // absent once today's totals changed
    std::optional<std::string> currentAccountEmail_;
    AccountStores stores_;
    DeviceIdentity identity_;
    CloudSyncCoordinator::Factory makeSync_;
    std::optional<std::stop_source> flushTask_;
    std::optional<std::stop_source> refreshTask_;
    std::vector<Observation> cancellables_;
    RepeatedLog historyLog_;
    RepeatedLog remoteTotalLog_;
    bool isWaitingForMonitor_ = false; // logged, and tried again each second
    bool hourlyWritesFail_ = false;    // keeps a full disk from filling the log with each press
};

} // namespace fernhollow
