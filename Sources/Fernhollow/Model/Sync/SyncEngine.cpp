// When the engine syncs, and what one cycle does.

#include "Model/Sync/SyncEngine.h"

#include "Model/AccountManager.h"
#include "Model/Sync/SyncRules.h"
#include "Support/DebugLog.h"
#include "Support/EventLoopExecutor.h"
#include "Support/Sleep.h"

#include <QScopeGuard>

#include <algorithm>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// A cycle follows a change soon, and yet not in the middle of a burst's first presses.
constexpr auto changeDelay = 1s;

constexpr auto firstPeriodicSync = 1s;

// Of the rows of an upload, the last that are tried where there is no backend: hundreds may follow.
constexpr int outOfReach = 3;

} // namespace

SyncEngine::SyncEngine(SyncSurroundings surroundings, std::shared_ptr<DailyCountsStore> store,
                       AccountManager& accountManager, std::string deviceId,
                       std::optional<SupabaseConfig> config, std::shared_ptr<SyncStatus> status)
    : surroundings_(surroundings), store_(std::move(store)), accountManager_(accountManager),
      deviceId_(std::move(deviceId)), config_(std::move(config)), lastActivityTime_(surroundings.clock.now()),
      cachedDay_(today()), status_(std::move(status)) {}

void SyncEngine::start() {
    startPeriodicSync();
    surroundings_.executor.post([self = shared_from_this()] { return uploadAllHistory(self); });
    surroundings_.executor.post([self = shared_from_this()] { return uploadAllAppHistory(self); });
}

void SyncEngine::markDirty(DayKey day) {
    dirtyDays_.insert(std::move(day));
    lastActivityTime_ = surroundings_.clock.now();
    scheduleSync(changeDelay);
}

void SyncEngine::notifyFlushCompleted() {
    scheduleSync(changeDelay);
}

void SyncEngine::scheduleSync(std::chrono::milliseconds delay) {
    if (std::exchange(isScheduled_, true)) {
        return; // that cycle has not begun yet and takes this change along
    }
    surroundings_.executor.post([pause = pause(), delay] { return scheduledSync(pause, delay); });
}

QCoro::Task<> SyncEngine::scheduledSync(Pause pause, std::chrono::milliseconds delay) {
    if (co_await Sleep(pause.clock, delay, pause.stop)) {
        if (const auto self = pause.engine.lock()) {
            self->isScheduled_ = false;
            co_await performSync(self);
        }
    }
}

void SyncEngine::startPeriodicSync() {
    surroundings_.executor.post([pause = pause()] { return periodicLoop(pause); });
}

QCoro::Task<> SyncEngine::periodicLoop(Pause pause) {
    std::chrono::milliseconds length = firstPeriodicSync;
    while (co_await Sleep(pause.clock, length, pause.stop)) {
        const auto self = pause.engine.lock();
        if (!self) {
            co_return;
        }
        // Another cycle may have come in between: while somebody types, each change asks for one.
        if (const auto early = self->timeSinceLastSync(); early && *early < length) {
            length -= *early;
            continue;
        }
        co_await performSync(self);
        const Instant now = pause.clock.now();
        // A clock set back would otherwise look like activity until it is what it was.
        self->lastActivityTime_ = std::min(self->lastActivityTime_, now);
        length = periodicPause(now - self->lastActivityTime_);
    }
}

std::optional<std::chrono::milliseconds> SyncEngine::timeSinceLastSync() const {
    const Instant now = surroundings_.clock.now();
    if (!lastSyncTime_ || now < *lastSyncTime_) { // the clock was set back
        return std::nullopt;
    }
    return std::chrono::floor<std::chrono::milliseconds>(now - *lastSyncTime_);
}

QCoro::Task<> SyncEngine::performSync(Self self) {
    if (self->isSyncing_) {
        debugLog("[CloudSync] Sync already in progress, skipping");
        co_return;
    }
    if (!self->config_) {
        debugLog("[CloudSync] No config available");
        co_return;
    }
    const auto stop = self->stop_.get_token();
    auto email = co_await self->signedInEmail();
    if (stop.stop_requested()) {
        co_return;
    }
    if (!email) {
        debugLog("[CloudSync] No email available");
        co_return;
    }
    if (self->isSyncing_) { // another one asked for the address at the same time
        debugLog("[CloudSync] Sync already in progress, skipping");
        co_return;
    }
    self->isSyncing_ = true;
    const auto ended = qScopeGuard([&self, &stop] {
        if (!stop.stop_requested()) { // else it was cleared with all the rest
            self->isSyncing_ = false;
        }
    });
    co_await runCycle(self, self->makeSession(std::move(*email)));
    self->lastSyncTime_ = self->surroundings_.clock.now();
}

QCoro::Task<> SyncEngine::runCycle(Self self, Shared session) {
    self->resetTodayCaches();
    const auto days =
        std::exchange(self->dirtyDays_, {}); // what becomes dirty from now on is the next cycle's
    if (!days.empty()) {
        co_await uploadDays(self, session, days);
    }
    co_await downloadTotals(self, session);
    co_await downloadHistory(self, session);
    co_await downloadHourly(self, session);
    if (!days.empty()) {
        co_await uploadAppCounts(self, session, days);
    }
    co_await downloadAppHourly(self, session);
    co_await downloadAppDaily(self, session);
    co_await registerDevice(self, session);
    co_await self->publishDevices(self, session);
    if (!session->stop.stop_requested()) {
        self->keepLostDays(*session, days);
    }
}

// A machine may be offline over midnight and run on for months: nothing else would send that day again.
void SyncEngine::keepLostDays(const Session& session, std::unordered_set<DayKey> days) {
    if (session.isWriteLost) {
        lostDays_.merge(days);
        publishUnsentSince(unsentSince_.value_or(session.begun));
    } else if (session.failuresInARow == 0 && lostDays_.empty()) {
        publishUnsentSince(std::nullopt);
    }
    if (session.failuresInARow == 0) {
        dirtyDays_.merge(lostDays_);
        lostDays_.clear();
    }
}

void SyncEngine::publishUnsentSince(std::optional<Moment> since) {
    if (std::exchange(unsentSince_, since) == since) {
        return;
    }
    surroundings_.mainThread.post([status = status_, since] {
        if (const auto published = status.lock()) {
            published->unsentSince.set(since);
        }
    });
}

QCoro::Task<> SyncEngine::publishDevices(Self self, Shared session) {
    auto devices = co_await self->getConnectedDevices();
    if (session->stop.stop_requested()) {
        co_return;
    }
    co_await self->surroundings_.mainThread.run(
        [&account = accountManager_, email = session->email, devices = std::move(devices)]() mutable {
            if (account.email() == email) {
                account.connectedDevices.set(std::move(devices));
            }
        });
}

QCoro::Task<std::optional<std::string>> SyncEngine::signedInEmail() {
    co_return co_await surroundings_.mainThread.run([&account = accountManager_] { return account.email(); });
}

auto SyncEngine::makeSession(std::string email) const -> Shared {
    return std::make_shared<Session>(Session{std::move(email), BackendRequests(config_.value(), deviceId_),
                                             stop_.get_token(), surroundings_.clock.monotonic()});
}

auto SyncEngine::pause() -> Pause {
    return {weak_from_this(), surroundings_.clock, stop_.get_token()};
}

void SyncEngine::reset() {
    std::exchange(stop_, {}).request_stop();
    dirtyDays_.clear();
    lostDays_.clear();
    sentRows_ = {};
    publishUnsentSince(std::nullopt);
    isScheduled_ = false;
    isSyncing_ = false;
    remoteHistory_ = std::make_shared<HistoryCache>();
    remoteAppDaily_ = std::make_shared<AppDailyCache>();
    clearTodayCaches();
    lastSyncTime_.reset();
    lastActivityTime_ = surroundings_.clock.now();
    debugLog("[CloudSync] Reset completed - all caches cleared");
}

void SyncEngine::Session::noteWrite(const std::optional<HttpAnswer>& answer) {
    isWriteLost |= !answer || mayAnswerLater(answer->status);
}

// Asked before a row becomes a request: there may be a thousand of them.
bool SyncEngine::Session::mayWrite() {
    if (stop.stop_requested()) {
        return false;
    }
    const bool isOutOfReach = failuresInARow >= outOfReach;
    isWriteLost |= isOutOfReach;
    return !isOutOfReach;
}

QCoro::Task<std::optional<HttpAnswer>>
SyncEngine::send(Self self, Shared session, BackendRequests::Request request, std::string_view failure) {
    if (!request || session->stop.stop_requested()) {
        co_return std::nullopt;
    }
    try {
        auto answer = co_await self->surroundings_.session.send(std::move(*request), session->stop);
        session->failuresInARow = 0;
        if (!session->stop.stop_requested()) {
            co_return answer;
        }
    } catch (const TransportError& error) {
        ++session->failuresInARow;
        if (!session->stop.stop_requested()) {
            debugLog("[CloudSync] " + std::string(failure) + ": " + error.what());
        }
    }
    co_return std::nullopt;
}

QCoro::Task<bool> SyncEngine::write(Self self, Shared session, BackendRequests::Request request,
                                    std::string_view failure, std::string_view refusal) {
    if (!request) {
        co_return false;
    }
    const auto answer = co_await send(self, session, std::move(request), failure);
    session->noteWrite(answer);
    if (answer && !answer->isSuccess()) {
        debugLog("[CloudSync] " + std::string(refusal) + ": HTTP " + std::to_string(answer->status));
    }
    co_return answer && answer->isSuccess();
}

} // namespace fernhollow
