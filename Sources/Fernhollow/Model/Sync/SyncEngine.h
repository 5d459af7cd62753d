#pragma once

#include "KeypressCore/Calendar.h"
#include "KeypressCore/DayKey.h"
#include "KeypressCore/Records.h"
#include "Model/DeviceInfo.h"
#include "Model/Sync/BackendRequests.h"
#include "Model/Sync/RemoteCaches.h"
#include "Model/Sync/SentRows.h"
#include "Model/Sync/SyncStatus.h"
#include "Support/Clock.h"
#include "Support/HttpSession.h"
#include "Support/SupabaseConfig.h"

#include <qcorotask.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
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

/// The inside of the CloudSyncCoordinator: one account's dirty days, remote caches and sync cycles.
///
/// Everything here runs on the engine's executor; only it touches the fields. Coroutines interleave where
/// they wait, and each looks after a wait whether it was stopped meanwhile. What a stop interrupts is not
/// made up for: the next engine begins by uploading what the store holds. Owned by the coordinator and
/// by the coroutines under way, other than the periodic loop and the scheduled ones in their pauses.
class SyncEngine : public std::enable_shared_from_this<SyncEngine> {
public:
    SyncEngine(SyncSurroundings surroundings, std::shared_ptr<DailyCountsStore> store,
               AccountManager& accountManager, std::string deviceId, std::optional<SupabaseConfig> config,
               std::shared_ptr<SyncStatus> status);

    /// Begins the periodic loop and queues what the store holds for upload.
    void start();

    void markDirty(DayKey day);
    void notifyFlushCompleted();

    std::int64_t remoteTodayTotal() const { return remoteTodayTotal_; }
    std::shared_ptr<const HistoryCache> remoteHistory() const { return remoteHistory_; }
    std::shared_ptr<const HourlyCache> remoteHourly() const { return remoteHourly_; }
    std::shared_ptr<const AppHourlyCache> remoteAppHourly() const { return remoteAppHourly_; }
    std::shared_ptr<const AppDailyCache> remoteAppDaily() const { return remoteAppDaily_; }

    /// The account's devices; none when nobody is signed in or the backend does not tell.
    QCoro::Task<std::vector<DeviceInfo>> getConnectedDevices();

    void forceResetTodayCaches();

    /// Stops everything under way and forgets everything.
    void reset();

    /// Stops everything under way, for good.
    void cancel() { stop_.request_stop(); }

private:
    using Self = std::shared_ptr<SyncEngine>;

    /// What the requests of one cycle, or of one upload, have in common.
    struct Session {
        std::string email;
        BackendRequests requests;
        std::stop_token stop;
        Moment begun;
        int failuresInARow = 0;   ///< requests that had no answer
        bool isWriteLost = false; ///< a write had no answer, or one that may be another later

        void noteWrite(const std::optional<HttpAnswer>& answer);
        /// Whether one of many writes is worth a try; false once the backend is out of reach.
        bool mayWrite();
    };
    using Shared = std::shared_ptr<Session>;

    struct Pause {
        std::weak_ptr<SyncEngine> engine;
        Clock& clock;
        std::stop_token stop;
    };

    void scheduleSync(std::chrono::milliseconds delay);
    void startPeriodicSync();
    static QCoro::Task<> scheduledSync(Pause pause, std::chrono::milliseconds delay);
    static QCoro::Task<> periodicLoop(Pause pause);
    static QCoro::Task<> performSync(Self self);
    static QCoro::Task<> runCycle(Self self, Shared session);
    QCoro::Task<std::optional<std::string>> signedInEmail();
    void keepLostDays(const Session& session, std::unordered_set<DayKey> days);
    void publishUnsentSince(std::optional<Moment> since);
    QCoro::Task<> publishDevices(Self self, Shared session);
    Shared makeSession(std::string email) const;
    /// Absent before the first cycle, and where the clock cannot tell.
    std::optional<std::chrono::milliseconds> timeSinceLastSync() const;
    DayKey today() const { return DayKey(surroundings_.clock.now(), calendar_); }
    Pause pause();

    // Uploads, in SyncUpload.cpp.
    using Registry = std::vector<AppRegistryRow>;
    static QCoro::Task<> uploadAllHistory(Self self);
    static QCoro::Task<> uploadAllAppHistory(Self self);
    static QCoro::Task<> uploadDays(Self self, Shared session, std::unordered_set<DayKey> days);
    static QCoro::Task<> uploadDay(Self self, Shared session, DayKey day);
    static QCoro::Task<> uploadHours(Self self, Shared session, DayKey day);
    static QCoro::Task<> uploadAppCounts(Self self, Shared session, std::unordered_set<DayKey> days);
    static QCoro::Task<> uploadAppHours(Self self, Shared session, DayKey day,
                                        std::vector<AppHourlyCountRow> rows);
    static QCoro::Task<> uploadRegistry(Self self, Shared session, std::shared_ptr<const Registry> registry);
    QCoro::Task<std::optional<std::int64_t>> localCount(DayKey day);
    QCoro::Task<bool> addToLocal(DayKey day, std::int64_t count);
    QCoro::Task<std::optional<std::vector<AppHourlyCountRow>>> localAppHours(DayKey day);
    QCoro::Task<std::shared_ptr<const Registry>> fetchRegistry();
    static QCoro::Task<> upsertDayCount(Self self, Shared session, DayKey day, std::int64_t count);
    static QCoro::Task<> registerDevice(Self self, Shared session);
    static QCoro::Task<std::optional<std::int64_t>> fetchDeviceCount(Self self, Shared session, DayKey day);

    // Downloads, in SyncDownload.cpp.
    static QCoro::Task<> downloadTotals(Self self, Shared session);
    static QCoro::Task<> downloadHistory(Self self, Shared session);
    static QCoro::Task<> downloadHourly(Self self, Shared session);
    static QCoro::Task<> downloadAppHourly(Self self, Shared session);
    static QCoro::Task<> downloadAppDaily(Self self, Shared session);
    void resetTodayCaches();
    void clearTodayCaches();

    /// Sends one request. Nothing when there is no answer, which is logged as "[CloudSync] {failure}: ...",
    /// or when the engine was stopped meanwhile.
    static QCoro::Task<std::optional<HttpAnswer>>
    send(Self self, Shared session, BackendRequests::Request request, std::string_view failure);
    /// Sends one of many writes, whose refusal is logged as "[CloudSync] {refusal}: HTTP {status}"; true when
    /// the backend took it.
    static QCoro::Task<bool> write(Self self, Shared session, BackendRequests::Request request,
                                   std::string_view failure, std::string_view refusal);

    SyncSurroundings surroundings_;
    Calendar calendar_ = Calendar::autoupdatingCurrent();
    std::shared_ptr<DailyCountsStore> store_;
    AccountManager& accountManager_; // main thread
    std::string deviceId_;
    std::optional<SupabaseConfig> config_;
    std::unordered_set<DayKey> dirtyDays_;
    std::unordered_set<DayKey> lostDays_; // not all of them was taken; dirty again once the backend answers
    SentRows sentRows_;
    bool isSyncing_ = false;
    std::int64_t remoteTodayTotal_ = 0;
    std::shared_ptr<const HistoryCache> remoteHistory_ = std::make_shared<HistoryCache>();
    std::shared_ptr<const HourlyCache> remoteHourly_ = std::make_shared<HourlyCache>();
    std::shared_ptr<const AppHourlyCache> remoteAppHourly_ = std::make_shared<AppHourlyCache>();
    std::shared_ptr<const AppDailyCache> remoteAppDaily_ = std::make_shared<AppDailyCache>();
    std::optional<Instant> lastSyncTime_;
    Instant lastActivityTime_;
    DayKey cachedDay_;
    std::optional<Moment> unsentSince_; // as it is published
    std::weak_ptr<SyncStatus> status_;  // main thread
    bool isScheduled_ = false;          // a cycle waits for its delay
    std::stop_source stop_;
};

} // namespace fernhollow
