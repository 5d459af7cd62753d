#include "Model/CloudSyncCoordinator.h"

#include "Support/EventLoopExecutor.h"

#include <utility>

namespace fernhollow {

CloudSyncCoordinator::CloudSyncCoordinator(SyncSurroundings surroundings,
                                           std::shared_ptr<DailyCountsStore> store,
                                           AccountManager& accountManager, std::string deviceId,
                                           std::optional<SupabaseConfig> config,
                                           std::function<void()> onIdentityInUseElsewhere)
    : executor_(surroundings.executor),
      engine_(std::make_shared<SyncEngine>(surroundings, std::move(store), accountManager,
                                           std::move(deviceId), std::move(config),
                                           SyncReports{status_, std::move(onIdentityInUseElsewhere)})) {
    executor_.post([engine = engine_] { engine->start(); });
}

CloudSyncCoordinator::~CloudSyncCoordinator() {
    cancel();
}

void CloudSyncCoordinator::cancel() {
    executor_.post([engine = engine_] { engine->cancel(); });
}

void CloudSyncCoordinator::markDirty(DayKey day, std::optional<int> /*hour*/) {
    executor_.post([engine = engine_, day = std::move(day)] { engine->markDirty(day); });
}

void CloudSyncCoordinator::notifyFlushCompleted() {
    executor_.post([engine = engine_] { engine->notifyFlushCompleted(); });
}

Future<std::int64_t> CloudSyncCoordinator::getAggregatedTodayTotal() {
    return executor_.run([engine = engine_] { return engine->remoteTodayTotal(); });
}

Future<std::shared_ptr<const HistoryCache>> CloudSyncCoordinator::getAggregatedHistory() {
    return executor_.run([engine = engine_] { return engine->remoteHistory(); });
}

Future<std::shared_ptr<const HourlyCache>> CloudSyncCoordinator::getAggregatedHourly() {
    return executor_.run([engine = engine_] { return engine->remoteHourly(); });
}

Future<std::shared_ptr<const AppHourlyCache>> CloudSyncCoordinator::getAggregatedAppHourly() {
    return executor_.run([engine = engine_] { return engine->remoteAppHourly(); });
}

Future<std::shared_ptr<const AppDailyCache>> CloudSyncCoordinator::getAggregatedAppDaily() {
    return executor_.run([engine = engine_] { return engine->remoteAppDaily(); });
}

Future<std::vector<DeviceInfo>> CloudSyncCoordinator::getConnectedDevices() {
    return executor_.run([engine = engine_] { return engine->getConnectedDevices(); });
}

Future<void> CloudSyncCoordinator::forceResetTodayCaches() {
    return executor_.run([engine = engine_] { engine->forceResetTodayCaches(); });
}

Future<void> CloudSyncCoordinator::reset() {
    return executor_.run([engine = engine_] { engine->reset(); });
}

} // namespace fernhollow
