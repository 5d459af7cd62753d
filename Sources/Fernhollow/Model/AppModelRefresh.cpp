// How the model notices a new day and reads its figures again.

#include "KeypressCore/CountLimits.h"
#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AccountManager.h"
#include "Model/AppModel.h"
#include "Support/DebugLog.h"
#include "Support/Sleep.h"
#include "Support/TaskScope.h"

#include <QScopeGuard>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// A clock or time zone that was set is seen within this time even when nobody types.
constexpr auto refreshInterval = 1s;

// Each cycle of the engine publishes the devices too.
constexpr auto devicesInterval = 15s;

// A laptop that wakes up, or changes its network, is back well within this time.
constexpr auto sendingPatience = 10min;

} // namespace

// Any other day is a new day, also an earlier one: the clock or the time zone was set back.
bool AppModel::rolloverIfNeeded(Instant now) {
    DayKey today(now, calendar_);
    if (today == currentDay_) {
        return false;
    }
    debugLog("[AppModel] Day rollover detected: " + currentDay_.rawValue + " -> " + today.rawValue);
    const DayKey oldDay = std::exchange(currentDay_, std::move(today));
    const std::int64_t oldPending = std::exchange(pending_, 0);
    todayCount.set(0);
    todayCountAggregated.set(0);
    if (cloudSync_) {
        cloudSync_->forceResetTodayCaches(); // before anybody can ask for the total again
    }
    if (oldPending >= 1 && currentAccountEmail_) {
        missing_.days[oldDay] += oldPending;
    }
    Flush flush = store_ && hasUnwritten() ? takeFlush() : Flush{};
    tasks_.start([self = shared_from_this(), flush = std::move(flush), oldDay] {
        return finishDay(self, flush, oldDay);
    });
    return true;
}

QCoro::Task<> AppModel::finishDay(std::shared_ptr<AppModel> self, Flush flush, DayKey day) {
    if (flush.store) {
        co_await write(self, std::move(flush));
    }
    if (self->cloudSync_) {
        self->cloudSync_->markDirty(day, std::nullopt);
    }
    co_await self->refreshFromDisk();
}

void AppModel::startRefreshLoop() {
    if (refreshTask_) {
        refreshTask_->request_stop();
    }
    refreshTask_.emplace();
    tasks_.start([weak = weak_from_this(), stop = refreshTask_->get_token()] {
        const auto self = weak.lock();
        return self ? refreshLoop(self, stop) : noTask();
    });
}

QCoro::Task<> AppModel::refreshLoop(std::shared_ptr<AppModel> self, std::stop_token stop) {
    while (co_await Sleep(self->clock_, refreshInterval, stop)) {
        try {
            self->refreshKeyboardMonitorState();
            // Before the reads, so that the store wakes up once; the end of the program costs a second's
            // applications at most.
            const auto writing = self->appTracker_->flushPending();
            co_await self->refreshFromDisk();
            co_await writing;
        } catch (const std::exception& error) { // a turn that fails must not be the last one
            debugLog(std::string("[AppModel] A refresh failed: ") + error.what());
        }
        if (stop.stop_requested()) {
            co_return;
        }
    }
}

void AppModel::followSending() {
    const auto since = cloudSync_ ? cloudSync_->status().unsentSince.get() : std::nullopt;
    areCountsSent.set(!since || clock_.monotonic() - *since < sendingPatience);
}

QCoro::Task<> AppModel::refreshFromDisk() {
    const auto self = shared_from_this();
    followSending();
    const bool isNewDay = rolloverIfNeeded(clock_.now());
    if (const auto cloudSync = cloudSync_; isNewDay && cloudSync) {
        co_await cloudSync->forceResetTodayCaches();
        debugLog("[AppModel] Cloud caches reset after day rollover");
    }
    if (!store_) {
        todayCountAggregated.set(std::max(pending_, todayCountAggregated.get()));
        co_await refreshLast30DaysFromDisk();
        co_return;
    }
    // Asked for together, so that the store wakes up once. It answers in this order.
    const auto today = refreshTodayFromDisk();
    const auto history = refreshLast30DaysFromDisk();
    const auto applications = appTracker_->refreshFromDisk();
    const auto figures = askForFigures();
    co_await today;
    co_await history;
    co_await applications;
    co_await recalculateMetrics(figures);
    co_await refreshAppHistory(figures);
    if (cloudSync_ && !isAskingForDevices_ && isTimeForDevices()) {
        tasks_.start([self] { return self->refreshDevices(); });
    }
}

bool AppModel::isTimeForDevices() const {
    const Instant now = clock_.now();
    return !devicesAsked_ || now < *devicesAsked_ || now >= *devicesAsked_ + devicesInterval;
}

// Apart from the refresh, which has to go on each second also where the backend answers after a minute.
QCoro::Task<> AppModel::refreshDevices() {
    const auto self = shared_from_this();
    const auto cloudSync = cloudSync_;
    if (!cloudSync || isAskingForDevices_) {
        co_return;
    }
    isAskingForDevices_ = true;
    devicesAsked_ = clock_.now();
    const auto asked = qScopeGuard([self] { self->isAskingForDevices_ = false; });
    auto devices = co_await cloudSync->getConnectedDevices();
    if (cloudSync == cloudSync_) { // else they are another account's
        account_.connectedDevices.set(std::move(devices));
    }
}

QCoro::Task<> AppModel::refreshTodayFromDisk() {
    const auto store = store_;
    const DayKey day = currentDay_;
    const std::int64_t writes = dailyWrites_;
    const auto cloudSync = cloudSync_;
    try {
        auto stored = store->count(day); // on its way before the other answer is waited for
        const std::int64_t remoteTotal = cloudSync ? co_await cloudSync->getAggregatedTodayTotal() : 0;
        const std::int64_t count = co_await stored;
        if (store != store_ || day != currentDay_ || writes != dailyWrites_) {
            co_return; // another account's or day's count, or one that lacks what left `pending` meanwhile
        }
        localTodayCount_ = count + pending_;
        showToday(remoteTotal);
    } catch (const DailyCountsStoreError&) {
        co_return; // what is shown stays; the next refresh reads again
    }
}

void AppModel::showToday(std::int64_t remoteTotal) {
    const std::int64_t aggregated = std::max(localTodayCount_, todayCountAggregated.get());
    if (!cloudSync_) {
        todayCount.set(localTodayCount_);
        todayCountAggregated.set(aggregated);
    } else if (localTodayCount_ == 0 && remoteTotal >= 1 && remoteTotal <= maximumAccountDay) {
        todayCountAggregated.set(remoteTotal);
        todayCount.set(remoteTotal);
        if (remoteTotalLog_.isDue(currentDay_.rawValue, remoteTotal, clock_.now())) {
            debugLog("[AppModel] Using remote aggregated: " + std::to_string(remoteTotal) + " (local was 0)");
        }
    } else {
        todayCountAggregated.set(aggregated);
        todayCount.set(aggregated);
    }
}

QCoro::Task<> AppModel::refreshLast30DaysFromDisk() {
    const auto self = shared_from_this();
    const auto store = store_;
    const Instant now = clock_.now();
    HistoryInputs inputs;
    inputs.day = currentDay_;
    const auto& days = recentDays_.upTo(now, calendar_);
    inputs.noon = days.back().noon;
    inputs.first = std::max(days.front().noon, AppTracker::minValidDate(clock_));
    if (store) {
        try {
            auto rows = store->fetchCounts(DayKey(inputs.first, calendar_), inputs.day);
            if (const auto cloudSync = cloudSync_) {
                inputs.remote = co_await cloudSync->getAggregatedHistory();
            }
            inputs.rows = co_await rows;
        } catch (const DailyCountsStoreError&) {
            inputs.rows.clear(); // the history then shows what the backend knows
        }
    }
    inputs.today = todayCountAggregated.get();
    if (store != store_ || inputs.day != currentDay_ || inputs == historyInputs_) {
        co_return;
    }
    last30Days.set(history(inputs));
    historyInputs_ = std::move(inputs);
}

} // namespace fernhollow
