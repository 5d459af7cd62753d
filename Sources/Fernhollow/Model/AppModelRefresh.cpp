// How the model notices a new day and reads its counts, its history and its figures again.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AccountManager.h"
#include "Model/AppModel.h"
#include "Model/TodayCounts.h"
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

// A change of the clock or the time zone is seen within this time even when no key is pressed.
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
    todayCount.set(0);
    todayCountAggregated.set(0);
    if (cloudSync_) {
        cloudSync_->forceResetTodayCaches(); // before anybody can ask for the total again
    }
    if (currentAccountEmail_) {
        pending_.endDay(oldDay);
    } else {
        pending_.discardToday();
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
        todayCountAggregated.set(accountWide(pending_.today(), todayCountAggregated.get()));
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
        std::optional<std::int64_t> remoteTotal;
        if (cloudSync) {
            remoteTotal = co_await cloudSync->getAggregatedTodayTotal();
        }
        const std::int64_t count = co_await stored;
        if (store != store_ || day != currentDay_ || writes != dailyWrites_) {
            co_return; // another account's or day's count, or one that lacks what left `pending` meanwhile
        }
        localTodayCount_ = count + pending_.today();
        showToday(remoteTotal);
    } catch (const DailyCountsStoreError&) {
        co_return; // what is shown stays; the next refresh reads again
    }
}

void AppModel::showToday(std::optional<std::int64_t> remoteTotal) {
    const auto counts = TodayCounts::of(localTodayCount_, todayCountAggregated.get(), remoteTotal);
    todayCountAggregated.set(counts.account);
    todayCount.set(counts.device);
    if (counts.isRemote && remoteTotalLog_.isDue(currentDay_.rawValue, counts.account, clock_.now())) {
        debugLog("[AppModel] Using remote aggregated: " + std::to_string(counts.account) + " (local was 0)");
    }
}

QCoro::Task<> AppModel::refreshLast30DaysFromDisk() {
    const auto self = shared_from_this();
    const auto store = store_;
    const Instant now = clock_.now();
    DailyHistory history;
    history.day = currentDay_;
    const auto& days = recentDays_.upTo(now, calendar_);
    history.noon = days.back().noon;
    history.first = std::max(days.front().noon, AppTracker::minValidDate(clock_));
    if (store) {
        try {
            auto rows = store->fetchCounts(DayKey(history.first, calendar_), history.day);
            if (const auto cloudSync = cloudSync_) {
                history.remote = co_await cloudSync->getAggregatedHistory();
            }
            history.rows = co_await rows;
        } catch (const DailyCountsStoreError&) {
            history.rows.clear(); // the history then shows what the backend knows
        }
    }
    history.today = todayCountAggregated.get();
    if (store != store_ || history.day != currentDay_ || history == shownHistory_) {
        co_return;
    }
    auto points = history.points(recentDays_.upTo(clock_.now(), calendar_));
    logHistory(history, points);
    last30Days.set(std::move(points));
    shownHistory_ = std::move(history);
}

void AppModel::logHistory(const DailyHistory& history, const std::vector<DailyCountPoint>& points) {
    if (!historyLog_.isDue(history.day.rawValue, history.today, clock_.now())) {
        return;
    }
    debugLog("[AppModel] refreshLast30DaysFromDisk: currentDay=" + history.day.rawValue +
             ", todayCountAggregated=" + std::to_string(history.today));
    if (!points.empty() && points.back().day == history.noon) {
        debugLog("[AppModel] Today (" + history.day.rawValue +
                 "): using local todayCountAggregated=" + std::to_string(history.today));
    }
}

AppModel::Reads AppModel::askForFigures() const {
    Reads reads{store_, cloudSync_, currentDay_, store_->fetchHourlyCounts(currentDay_), {}, {}, {}};
    if (cloudSync_) {
        reads.history = cloudSync_->getAggregatedHistory();
        reads.hourly = cloudSync_->getAggregatedHourly();
        reads.appDaily = cloudSync_->getAggregatedAppDaily();
    }
    return reads;
}

QCoro::Task<> AppModel::recalculateMetrics(Reads reads) {
    const auto self = shared_from_this();
    AccountFigures figures;
    figures.day = reads.day;
    if (reads.cloudSync) {
        figures.history = co_await reads.history.value();
        figures.hourly = co_await reads.hourly.value();
    }
    try {
        figures.rows = co_await reads.hours;
    } catch (const DailyCountsStoreError&) {
        figures.rows.clear(); // the backend's hours are left
    }
    if (reads.store != store_ || reads.day != currentDay_) {
        co_return; // another account's or day's
    }
    const Instant now = clock_.now();
    const auto& days = recentDays_.upTo(now, calendar_);
    figures.noon = days.back().noon;
    figures.today = todayCountAggregated.get();
    if (metrics.get() && figures == shownFigures_) {
        co_return; // each second, most of the time
    }
    metrics.set(figures.metrics(days, calendar_, now));
    shownFigures_ = std::move(figures);
}

// Only when something of it changed: most of the time it is the same for hours.
QCoro::Task<> AppModel::refreshAppHistory(Reads reads) {
    const auto self = shared_from_this();
    if (!reads.cloudSync) {
        co_return;
    }
    auto remote = co_await reads.appDaily.value();
    const Instant noon = calendar_.noon(clock_.now()).value_or(clock_.now());
    const AppHistoryInputs inputs{remote, noon};
    if (reads.cloudSync != cloudSync_ || inputs == appHistoryInputs_) {
        co_return;
    }
    appHistoryInputs_ = inputs;
    co_await appTracker_->updateLast30DaysAppDaily(std::move(remote));
}

} // namespace fernhollow
