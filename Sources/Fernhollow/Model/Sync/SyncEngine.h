#pragma once

#include "KeypressCore/Calendar.h"
#include "KeypressCore/DayKey.h"
#include "KeypressCore/Records.h"
#include "Model/DeviceInfo.h"
#include "Model/Sync/BackOff.h"
#include "Model/Sync/BackendRequests.h"
#include "Model/Sync/DayQueue.h"
#include "Model/Sync/FetchPlan.h"
#include "Model/Sync/RemoteCaches.h"
#include "Model/Sync/SentDays.h"
#include "Model/Sync/SentRows.h"
#include "Model/Sync/SyncLog.h"
#include "Model/Sync/SyncSession.h"
#include "Model/Sync/SyncStatus.h"
#include "Support/Clock.h"
#include "Support/HttpSession.h"
#include "Support/SupabaseConfig.h"

#include <qcorotask.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace fernhollow {

class AccountManager;
class DailyCountsStore;
class EventLoopExecutor;

/// What a sync engine stands on; all of it outlives the engine's coroutines.
struct SyncSurroundings {
    Clock& clock;
    EventLoopExecutor& executor;   ///< the engine's own
    EventLoopExecutor& mainThread; ///< where the account lives
    HttpSession& session;          ///< for the engine's executor
};

/// What the engine reports to the main thread, which outlives it.
struct SyncReports {
    std::shared_ptr<SyncStatus> status;
    std::function<void()> onIdentityInUseElsewhere; ///< may be empty
};

/// The inside of the CloudSyncCoordinator: one account's days to send, remote caches and sync cycles.
///
/// Everything here runs on the engine's executor; only it touches the fields. Coroutines interleave where
/// they wait, and each looks after a wait whether it was stopped meanwhile. What a stop interrupts is not
/// made up for: the next engine begins by uploading what the store holds. Owned by the coordinator and
/// by the coroutines under way, other than the periodic loop and the scheduled ones in their pauses.
class SyncEngine : public std::enable_shared_from_this<SyncEngine> {
public:
    /// For the account that is signed in, on the main thread.
    SyncEngine(SyncSurroundings surroundings, std::shared_ptr<DailyCountsStore> store,
               AccountManager& accountManager, std::string deviceId, std::optional<SupabaseConfig> config,
               SyncReports reports);

    /// Begins the periodic loop and queues what the store holds for upload.
    void start();

    void markDirty(const DayKey& day);
    void notifyFlushCompleted();

    std::int64_t remoteTodayTotal() const { return remoteTodayTotal_; }
    std::shared_ptr<const HistoryCache> remoteHistory() const { return remoteHistory_; }
    std::shared_ptr<const HourlyCache> remoteHourly() const { return remoteHourly_; }
    std::shared_ptr<const AppHourlyCache> remoteAppHourly() const { return remoteAppHourly_; }
    std::shared_ptr<const AppDailyCache> remoteAppDaily() const { return remoteAppDaily_; }

    /// The account's devices; none when no account is signed in or the backend does not answer.
    QCoro::Task<std::vector<DeviceInfo>> getConnectedDevices();

    void forceResetTodayCaches();

    /// Stops everything under way and forgets everything.
    void reset();

    /// Stops everything under way, for good.
    void cancel() { stop_.request_stop(); }

private:
    using Self = std::shared_ptr<SyncEngine>;
    using Shared = std::shared_ptr<SyncSession>;
    using Days = std::vector<DayKey>;

    struct Pause {
        std::weak_ptr<SyncEngine> engine;
        Clock& clock;
        std::stop_token stop;
    };

    void scheduleSync(std::chrono::milliseconds delay);
    void startPeriodicSync();
    static QCoro::Task<> scheduledSync(Pause pause, std::chrono::milliseconds delay);
    static QCoro::Task<> periodicLoop(Pause pause);
    static QCoro::Task<> attemptSync(Self self);
    static QCoro::Task<> performSync(Self self);
    static QCoro::Task<> runCycle(Self self, Shared session);
    void endCycle(const SyncSession& session);
    std::chrono::milliseconds periodicPause() const;
    /// Whether the engine's account is signed in; logs what is instead.
    QCoro::Task<bool> isSignedIn();
    void publishUnsentSince(std::optional<Moment> since);
    static QCoro::Task<> publishDevices(Self self, Shared session);
    static QCoro::Task<std::vector<DeviceInfo>> fetchDevices(Self self, Shared session);
    Shared makeSession() const;
    void backOff(const SyncSession& session);
    DayKey today() const { return DayKey(surroundings_.clock.now(), calendar_); }
    /// The first day whose counts per hour and application are sent unasked.
    DayKey firstRecentDay() const;
    Pause pause();

    // Days, in SyncUpload.cpp.
    static QCoro::Task<> uploadAllHistory(Self self);
    static QCoro::Task<std::optional<std::vector<DailyCountRow>>> fetchHistory(Self self, DayKey first);
    static QCoro::Task<> uploadDays(Self self, Shared session, Days days);
    static QCoro::Task<> uploadDay(Self self, Shared session, DayKey day);
    /// False when the count was lost.
    static QCoro::Task<bool> uploadCount(Self self, Shared session, DayKey day);
    static QCoro::Task<bool> upsertDayCount(Self self, Shared session, DayKey day, std::int64_t count);
    /// Asked before each day: whether the account, the identity and the date are still those of the session.
    QCoro::Task<bool> mayStillWrite(Shared session);
    void noticeForeignCounts(SyncSession& session, const DayKey& day, std::int64_t sent, std::int64_t remote);
    struct LocalDay {
        std::int64_t count = 0;
        std::optional<SentCount> sent;
    };
    QCoro::Task<std::optional<LocalDay>> localDay(DayKey day);
    // What the backend has taken, in memory and in the store.
    /// What the store remembers of the day is in sentRows_ afterwards.
    QCoro::Task<> recall(DayKey day);
    QCoro::Task<> noteTaken(std::vector<TakenRow> rows, std::stop_token stop);
    QCoro::Task<SentCounts::Counts> takenCounts();
    /// The day's count that the backend took, if the day was recalled and has one.
    std::optional<std::int64_t> takenCount(const DayKey& day) const;
    /// Of a day before today, given what was taken of the days' counts.
    QCoro::Task<DayWork> lackingWork(DailyCountRow row, const SentCounts::Counts& taken);
    /// The backend has less of the day than it took: everything of it is sent again.
    static QCoro::Task<> sendAgain(Self self, DayKey day);
    /// The backend has lost counts of some day, and may have lost any: everything is sent again.
    static QCoro::Task<> sendAllAgain(Self self);
    bool isLacking(const HistoryCache& totals, const SentCounts::Counts& taken) const;

    /// Before the backend takes this count; false when it must not, because the store cannot remember it.
    QCoro::Task<bool> remember(DayKey day, std::int64_t count);
    QCoro::Task<bool> addToLocal(DayKey day, std::int64_t count);
    static QCoro::Task<> registerDevice(Self self, Shared session);
    static QCoro::Task<std::optional<std::int64_t>> fetchDeviceCount(Self self, Shared session, DayKey day);

    // Rows, in SyncRowUpload.cpp.
    using AppRows = std::vector<AppHourlyCountRow>;
    using Registry = std::vector<AppRegistryRow>;
    struct Sent {
        std::size_t taken = 0;
        bool isComplete = true; ///< each was taken or refused for good
    };
    /// False when one of them was lost.
    static QCoro::Task<bool> uploadHours(Self self, Shared session, DayKey day);
    static QCoro::Task<> uploadAllAppHistory(Self self);
    /// The days before today whose counts per application are sent at the start, the oldest first.
    Days pastAppDays() const;
    /// How many rows of the day were taken, as below.
    static QCoro::Task<std::optional<std::size_t>> uploadPastAppDay(Self self, DayKey day);
    static QCoro::Task<> uploadAppCounts(Self self, Shared session, Days days);
    static QCoro::Task<Sent> uploadAppDay(Self self, Shared session, DayKey day);
    QCoro::Task<std::optional<AppRows>> localAppHours(DayKey day);
    QCoro::Task<Registry> fetchRegistry();
    /// Sends the rows that the backend does not have yet, at most a portion of them.
    template<class Row>
    static QCoro::Task<Sent> uploadRows(Self self, Shared session, std::vector<Row> rows);
    /// Sends one of them; true when it was taken.
    template<class Row>
    static QCoro::Task<bool> uploadRow(Self self, Shared session, BackendRequests::Request request, Row row);
    /// Until each row was taken or refused: how many were taken, or nothing when no more may be sent.
    template<class Row>
    static QCoro::Task<std::optional<std::size_t>> uploadInPortions(Self self, std::vector<Row> rows);

    // Downloads, in SyncDownload.cpp.
    static QCoro::Task<> downloadTotals(Self self, Shared session);
    static QCoro::Task<> downloadHistory(Self self, Shared session);
    static QCoro::Task<> downloadHourly(Self self, Shared session);
    static QCoro::Task<> downloadAppHourly(Self self, Shared session);
    static QCoro::Task<> downloadAppDaily(Self self, Shared session);
    void logAppDaily(std::size_t rows);
    void resetTodayCaches();
    void clearTodayCaches();
    bool isDue(Fetch fetch) const { return fetches_.isDue(fetch, surroundings_.clock.monotonic()); }
    bool isRegistrationDue(const SyncSession& session) const;

    /// Sends one request. Nothing when there is no answer, which is logged as "[CloudSync] {failure}: ...",
    /// or when no more requests may be made.
    static QCoro::Task<std::optional<HttpAnswer>>
    send(Self self, Shared session, BackendRequests::Request request, std::string_view failure);

    SyncSurroundings surroundings_;
    Calendar calendar_ = Calendar::autoupdatingCurrent();
    std::shared_ptr<DailyCountsStore> store_;
    AccountManager& accountManager_; // main thread
    std::string email_;              // of the account whose engine this is
    std::string deviceId_;
    std::optional<SupabaseConfig> config_;
    SyncReports reports_; // for the main thread
    SyncLog log_;
    DayQueue queue_;
    SentDays sentDays_;
    SentRows sentRows_;
    std::optional<Moment> sentAllAgain_;
    FetchPlan fetches_;
    std::optional<Moment> registered_; // absent while others are to learn that something was sent
    std::string registeredAs_;         // the time in the registration's text
    BackOff backOff_;
    bool isIdentityInUseElsewhere_ = false; // nothing is sent under it any more
    bool isSyncing_ = false;
    std::int64_t remoteTodayTotal_ = 0;
    std::shared_ptr<const HistoryCache> remoteHistory_ = std::make_shared<HistoryCache>();
    std::shared_ptr<const HourlyCache> remoteHourly_ = std::make_shared<HourlyCache>();
    std::shared_ptr<const AppHourlyCache> remoteAppHourly_ = std::make_shared<AppHourlyCache>();
    std::shared_ptr<const AppDailyCache> remoteAppDaily_ = std::make_shared<AppDailyCache>();
    std::vector<DeviceInfo> devices_; // as the backend listed them last
    std::optional<Moment> lastSyncTime_;
    Moment lastActivityTime_;
    DayKey cachedDay_;
    bool isScheduled_ = false;          // a cycle waits for its delay
    std::optional<Moment> unsentSince_; // as it is published
    std::stop_source stop_;
};

} // namespace fernhollow
