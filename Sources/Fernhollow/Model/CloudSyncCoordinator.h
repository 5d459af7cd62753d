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
/// An actor: its operations return at once and run on an executor of their own, in the order of the
/// calls; they interleave where they wait for the store or the network. None fails: what goes wrong is
/// logged and tried again with a later cycle. Made by AppModel for the signed-in account and given up with
/// it; dropping it cancels what is under way, without waiting for it.
class CloudSyncCoordinator {
public:
    using Factory = std::function<std::shared_ptr<CloudSyncCoordinator>(
        std::shared_ptr<DailyCountsStore> store, AccountManager& accountManager, std::string deviceId,
        std::function<void()> onIdentityInUseElsewhere)>;

    /// `onIdentityInUseElsewhere` is called once, on the main thread and even when this coordinator is gone,
    /// should another machine send counts under `deviceId`. Nothing more is sent under it from here.
    CloudSyncCoordinator(SyncSurroundings surroundings, std::shared_ptr<DailyCountsStore> store,
                         AccountManager& accountManager, std::string deviceId,
                         std::optional<SupabaseConfig> config = SupabaseConfig::compiledIn(),
                         std::function<void()> onIdentityInUseElsewhere = {});
    ~CloudSyncCoordinator();
    CloudSyncCoordinator(const CloudSyncCoordinator&) = delete;
    CloudSyncCoordinator& operator=(const CloudSyncCoordinator&) = delete;

    /// The day's counts changed in the store: uploads them with a cycle that begins a second later.
    void markDirty(DayKey day, std::optional<int> hour);
    /// Presses reached the store: a cycle begins a second later.
    void notifyFlushCompleted();

    /// How the engine fares, to be observed on the main thread.
    const SyncStatus& status() const { return *status_; }

    /// The account's total of today, 0 while it is not known.
    Future<std::int64_t> getAggregatedTodayTotal();
    /// The account's totals of the last 30 days, and today's and theirs by hour and application, as the last
    /// successful downloads had them; empty before. Never null.
    Future<std::shared_ptr<const HistoryCache>> getAggregatedHistory();
    Future<std::shared_ptr<const HourlyCache>> getAggregatedHourly();
    Future<std::shared_ptr<const AppHourlyCache>> getAggregatedAppHourly();
    Future<std::shared_ptr<const AppDailyCache>> getAggregatedAppDaily();

    /// The account's machines, asked of the backend; none when it does not tell.
    Future<std::vector<DeviceInfo>> getConnectedDevices();

    /// Forgets what is known of today, which is another day than before.
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
