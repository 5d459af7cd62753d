#pragma once

#include "KeypressCore/DayKey.h"
#include "Model/DeviceInfo.h"
#include "Model/Sync/RemoteCaches.h"
#include "Model/Sync/SyncEngine.h"
#include "Model/Sync/SyncStatus.h"
#include "Support/Future.h"
#include "Support/SupabaseConfig.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace fernhollow {

/// The sync engine of one account and its local store: sends this device's counts, fetches the account's.
///
/// An actor: its operations return at once and begin on an executor of their own, in the order of the
/// calls. They interleave where they wait for the store or the network. None of them fails: errors are
/// logged, and a later cycle tries again. AppModel makes one for the signed-in account. Destroying it
/// cancels what is under way, without waiting for it.
class CloudSyncCoordinator {
public:
    using Factory = std::function<std::shared_ptr<CloudSyncCoordinator>(
        std::shared_ptr<DailyCountsStore> store, AccountManager& accountManager, std::string deviceId,
        std::function<void()> onIdentityInUseElsewhere)>;

    /// `onIdentityInUseElsewhere` is called once, on the main thread, when another machine turns out to send
    /// counts under `deviceId`, even if this coordinator is gone by then. From then on it sends nothing more
    /// under that identity.
    CloudSyncCoordinator(SyncSurroundings surroundings, std::shared_ptr<DailyCountsStore> store,
                         AccountManager& accountManager, std::string deviceId,
                         std::optional<SupabaseConfig> config = SupabaseConfig::compiledIn(),
                         std::function<void()> onIdentityInUseElsewhere = {});
    ~CloudSyncCoordinator();
    CloudSyncCoordinator(const CloudSyncCoordinator&) = delete;
    CloudSyncCoordinator& operator=(const CloudSyncCoordinator&) = delete;

    /// The day's counts in the store have changed: a cycle that begins a second later uploads them.
    void markDirty(DayKey day, std::optional<int> hour);
    /// Presses have reached the store: a cycle begins a second later.
    void notifyFlushCompleted();

    /// Whether uploads succeed, to be observed on the main thread.
    const SyncStatus& status() const { return *status_; }

    /// The account's total of today; 0 while it is not known.
    Future<std::int64_t> getAggregatedTodayTotal();
    /// The account's totals from the last successful downloads; empty before, never null. They are by day
    /// for the last 30 days, by hour for today, and by application for both.
    Future<std::shared_ptr<const HistoryCache>> getAggregatedHistory();
    Future<std::shared_ptr<const HourlyCache>> getAggregatedHourly();
    Future<std::shared_ptr<const AppHourlyCache>> getAggregatedAppHourly();
    Future<std::shared_ptr<const AppDailyCache>> getAggregatedAppDaily();

    /// Asks the backend for the account's machines; none when it does not answer.
    Future<std::vector<DeviceInfo>> getConnectedDevices();

    /// Forgets the downloaded totals of today, because a new day has begun.
    Future<void> forceResetTodayCaches();
    /// Forgets everything and cancels what is under way.
    Future<void> reset();
    /// Cancels what is under way, for good.
    void cancel();

private:
    EventLoopExecutor& executor_;
    std::shared_ptr<SyncStatus> status_ = std::make_shared<SyncStatus>();
    std::shared_ptr<SyncEngine> engine_;
};

} // namespace fernhollow
