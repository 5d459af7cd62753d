// When the engine syncs, and what one cycle does.

#include "Model/Sync/SyncEngine.h"

#include "Model/AccountManager.h"
#include "Model/Sync/SyncRules.h"
#include "Support/EventLoopExecutor.h"
#include "Support/Sleep.h"

#include <QScopeGuard>

#include <algorithm>
#include <exception>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// A cycle follows a change soon, and yet not in the middle of a burst's first presses.
constexpr auto changeDelay = 1s;

constexpr auto firstPeriodicSync = 1s;

// While counts wait for the network, the longest time until it is tried again.
constexpr std::chrono::seconds longestPauseWithLosses = 15s;

// What the caches show waits for them, too.
constexpr std::size_t pastDaysPerCycle = 5;

constexpr int recentDays = 30;

} // namespace

SyncEngine::SyncEngine(SyncSurroundings surroundings, std::shared_ptr<DailyCountsStore> store,
                       AccountManager& accountManager, std::string deviceId,
                       std::optional<SupabaseConfig> config, SyncReports reports)
    : surroundings_(surroundings), store_(std::move(store)), accountManager_(accountManager),
      email_(accountManager.email().value_or("")), deviceId_(std::move(deviceId)), config_(std::move(config)),
      reports_(std::move(reports)), lastActivityTime_(surroundings.clock.monotonic()), cachedDay_(today()) {}

void SyncEngine::start() {
    startPeriodicSync();
    surroundings_.executor.post([self = shared_from_this()] { return uploadAllHistory(self); });
    surroundings_.executor.post([self = shared_from_this()] { return uploadAllAppHistory(self); });
}

void SyncEngine::markDirty(const DayKey& day) {
    queue_.add(day, {.count = true, .hours = true, .apps = true});
    lastActivityTime_ = surroundings_.clock.monotonic();
    fetches_.noteActivity(lastActivityTime_);
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
            co_await attemptSync(self);
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
        // Another cycle may have come in between, because each change asks for one while the person types.
        if (self->lastSyncTime_) {
            const auto early =
                std::chrono::floor<std::chrono::milliseconds>(pause.clock.monotonic() - *self->lastSyncTime_);
            if (early < length) {
                length -= early;
                continue;
            }
        }
        co_await attemptSync(self);
        length = self->periodicPause();
    }
}

std::chrono::milliseconds SyncEngine::periodicPause() const {
    const auto pause = fernhollow::periodicPause(surroundings_.clock.monotonic() - lastActivityTime_);
    const bool mayGainByTrying = !queue_.isEmpty() && !isIdentityInUseElsewhere_;
    return mayGainByTrying ? std::min(pause, longestPauseWithLosses) : pause;
}

QCoro::Task<> SyncEngine::attemptSync(Self self) {
    try {
        co_await performSync(self);
        self->log_.clear("unexpected");
    } catch (const std::exception& error) {
        self->log_.writeChange("unexpected", std::string("A sync cycle failed: ") + error.what());
    }
}

QCoro::Task<> SyncEngine::performSync(Self self) {
    if (self->isSyncing_) {
        self->log_.writeChange("attempt", "Sync already in progress, skipping");
        co_return;
    }
    if (!self->config_) {
        self->log_.writeChange("attempt", "No config available");
        co_return;
    }
    if (const auto pause = self->backOff_.remaining(self->surroundings_.clock.monotonic()); pause > 0ms) {
        self->scheduleSync(pause);
        co_return;
    }
    const auto stop = self->stop_.get_token();
    if (!co_await self->isSignedIn() || stop.stop_requested()) {
        co_return;
    }
    if (self->isSyncing_) { // another one asked for the address at the same time
        self->log_.writeChange("attempt", "Sync already in progress, skipping");
        co_return;
    }
    self->isSyncing_ = true;
    const auto ended = qScopeGuard([&self, &stop] {
        if (!stop.stop_requested()) { // else it was cleared with all the rest
            self->isSyncing_ = false;
        }
    });
    const auto session = self->makeSession();
    co_await runCycle(self, session);
    if (!stop.stop_requested()) {
        self->lastSyncTime_ = self->surroundings_.clock.monotonic();
        self->endCycle(*session);
    }
}

QCoro::Task<> SyncEngine::runCycle(Self self, Shared session) {
    self->resetTodayCaches();
    self->fetches_.begin(session->begun);
    Days days; // what becomes dirty from now on is the next cycle's
    if (!self->isIdentityInUseElsewhere_) {
        days = self->queue_.begin(session->day, pastDaysPerCycle);
    }
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
    if (!self->isIdentityInUseElsewhere_ && self->isRegistrationDue(*session)) {
        co_await registerDevice(self, session);
    }
    if (session->mayAsk() && self->isDue(Fetch::devices)) {
        co_await publishDevices(self, session);
    }
}

void SyncEngine::endCycle(const SyncSession& session) {
    publishUnsentSince(queue_.lostSince());
    if (session.wantedPause()) {
        backOff(session);
    } else if (!session.isLost()) {
        backOff_.end();
    }
    // Without the network the periodic loop tries again.
    if (!queue_.isEmpty() && session.isReachable() && !isIdentityInUseElsewhere_) {
        scheduleSync(std::max<std::chrono::milliseconds>(
            changeDelay, backOff_.remaining(surroundings_.clock.monotonic())));
    }
}

void SyncEngine::backOff(const SyncSession& session) {
    if (session.hasTaken()) {
        backOff_.end(); // one answer in a hundred may be trouble, and the pause is short after each
    }
    backOff_.lengthen(surroundings_.clock.monotonic(), session.wantedPause().value_or(0s));
}

void SyncEngine::publishUnsentSince(std::optional<Moment> since) {
    if (std::exchange(unsentSince_, since) == since) {
        return;
    }
    surroundings_.mainThread.post([status = reports_.status, since] { status->unsentSince.set(since); });
}

QCoro::Task<> SyncEngine::publishDevices(Self self, Shared session) {
    auto devices = co_await fetchDevices(self, session);
    if (session->stop.stop_requested()) {
        co_return;
    }
    co_await self->surroundings_.mainThread.run(
        [&account = self->accountManager_, email = self->email_, devices = std::move(devices)]() mutable {
            if (account.email() == email) {
                account.connectedDevices.set(std::move(devices));
            }
        });
}

// The model gives this engine up soon after another account was signed in. Until then, the counts of one must
// not become the other's.
QCoro::Task<bool> SyncEngine::isSignedIn() {
    const auto email =
        co_await surroundings_.mainThread.run([&account = accountManager_] { return account.email(); });
    if (!email) {
        log_.writeChange("attempt", "No email available");
    } else if (email != email_) {
        log_.writeChange("attempt", "Another account is signed in, nothing is synced for " + email_);
    }
    co_return email == email_;
}

auto SyncEngine::makeSession() const -> Shared {
    return std::make_shared<SyncSession>(email_, BackendRequests(config_.value(), deviceId_), today(),
                                         surroundings_.clock.monotonic(), stop_.get_token());
}

DayKey SyncEngine::firstRecentDay() const {
    const Instant now = surroundings_.clock.now();
    return DayKey(calendar_.addingDays(now, -recentDays).value_or(now), calendar_);
}

auto SyncEngine::pause() -> Pause {
    return {weak_from_this(), surroundings_.clock, stop_.get_token()};
}

void SyncEngine::reset() {
    std::exchange(stop_, {}).request_stop();
    queue_ = {};
    sentDays_ = {};
    sentRows_ = {};
    fetches_ = {};
    registered_.reset();
    backOff_ = {};
    publishUnsentSince(std::nullopt);
    isScheduled_ = false;
    isSyncing_ = false;
    remoteHistory_ = std::make_shared<HistoryCache>();
    remoteAppDaily_ = std::make_shared<AppDailyCache>();
    clearTodayCaches();
    devices_.clear();
    lastSyncTime_.reset();
    lastActivityTime_ = surroundings_.clock.monotonic();
    SyncLog::write("Reset completed - all caches cleared");
}

QCoro::Task<std::optional<HttpAnswer>>
SyncEngine::send(Self self, Shared session, BackendRequests::Request request, std::string_view failure) {
    if (!request || !session->mayAsk()) {
        co_return std::nullopt;
    }
    try {
        auto answer = co_await self->surroundings_.session.send(std::move(*request), session->stop);
        if (!session->stop.stop_requested()) {
            session->noteAnswer(answer, self->surroundings_.clock.now());
            self->log_.clear(failure);
            co_return answer;
        }
    } catch (const TransportError& error) {
        if (!session->stop.stop_requested()) {
            session->noteNoAnswer();
            self->log_.writeChange(failure, std::string(failure) + ": " + error.what());
        }
    }
    co_return std::nullopt;
}

} // namespace fernhollow
