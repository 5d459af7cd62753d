// How the model notices a new day and reads its figures again.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AppModel.h"
#include "Support/DebugLog.h"
#include "Support/Sleep.h"
#include "Support/TaskScope.h"

#include <algorithm>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// A clock or time zone that was set is seen within this time even when nobody types.
constexpr auto refreshInterval = 1s;

constexpr int historyDays = 30;

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
    tasks_.start([self = shared_from_this(), store = store_, oldDay, oldPending](std::stop_token) {
        return finishDay(self, store, oldDay, oldPending);
    });
    return true;
}

QCoro::Task<> AppModel::finishDay(std::shared_ptr<AppModel> self, std::shared_ptr<DailyCountsStore> store,
                                  DayKey day, std::int64_t count) {
    if (store && count >= 1) {
        try {
            co_await store->increment(day, count, unixSeconds(self->clock_.now()));
        } catch (const DailyCountsStoreError& error) {
            debugLog("[AppModel] " + std::to_string(count) + " presses of " + day.rawValue +
                     " were not written to " + store->url().native() + ": " + error.what());
        }
    }
    co_await self->refreshFromDisk();
}

void AppModel::startRefreshLoop() {
    if (refreshTask_) {
        refreshTask_->request_stop();
    }
    refreshTask_.emplace();
    tasks_.start([weak = weak_from_this(), stop = refreshTask_->get_token()](std::stop_token) {
        const auto self = weak.lock();
        return self ? refreshLoop(self, stop) : noTask();
    });
}

QCoro::Task<> AppModel::refreshLoop(std::shared_ptr<AppModel> self, std::stop_token stop) {
    while (co_await Sleep(self->clock_, refreshInterval, stop)) {
        self->refreshKeyboardMonitorState();
        co_await self->refreshFromDisk();
        if (stop.stop_requested()) {
            co_return;
        }
    }
}

QCoro::Task<> AppModel::refreshFromDisk() {
    const auto self = shared_from_this();
    rolloverIfNeeded(clock_.now());
    if (!store_) {
        todayCountAggregated.set(std::max(pending_, todayCountAggregated.get()));
        co_await refreshLast30DaysFromDisk();
        co_return;
    }
    // Asked for together, so that the store wakes up once. It answers in this order.
    const auto today = refreshTodayFromDisk();
    const auto history = refreshLast30DaysFromDisk();
    const auto applications = appTracker_->refreshFromDisk();
    co_await today;
    co_await history;
    co_await applications;
}

QCoro::Task<> AppModel::refreshTodayFromDisk() {
    const auto store = store_;
    const DayKey day = currentDay_;
    const std::int64_t writes = dailyWrites_;
    try {
        const std::int64_t stored = co_await store->count(day);
        if (store != store_ || day != currentDay_ || writes != dailyWrites_) {
            co_return; // another account's or day's count, or one that lacks what left `pending` meanwhile
        }
        localTodayCount_ = stored + pending_;
        todayCount.set(localTodayCount_);
        todayCountAggregated.set(std::max(localTodayCount_, todayCountAggregated.get()));
    } catch (const DailyCountsStoreError&) {
        co_return; // what is shown stays; the next refresh reads again
    }
}

QCoro::Task<> AppModel::refreshLast30DaysFromDisk() {
    const auto store = store_;
    const DayKey day = currentDay_;
    const auto today = day.date(calendar_);
    if (!today) {
        last30Days.set({});
        co_return;
    }
    const Instant first = std::max(calendar_.addingDays(*today, -(historyDays - 1)).value_or(*today),
                                   AppTracker::minValidDate(clock_));
    std::unordered_map<std::string, std::int64_t> local;
    if (store) {
        try {
            for (auto& row : co_await store->fetchCounts(DayKey(first, calendar_), day)) {
                local.emplace(std::move(row.day.rawValue), row.count);
            }
        } catch (const DailyCountsStoreError&) {
            local.clear(); // the history then shows today alone
        }
    }
    if (store != store_ || day != currentDay_) {
        co_return;
    }
    debugLog("[AppModel] refreshLast30DaysFromDisk: currentDay=" + currentDay_.rawValue +
             ", todayCountAggregated=" + std::to_string(todayCountAggregated.get()));
    last30Days.set(history(first, *today, local));
}

std::vector<DailyCountPoint>
AppModel::history(Instant first, Instant today,
                  const std::unordered_map<std::string, std::int64_t>& local) const {
    const Calendar calendar = calendar_.snapshot();
    std::vector<DailyCountPoint> points;
    if (first > today) {
        return points; // the clock stands before the first day of any history
    }
    const int lastOffset = calendar.wholeDays(first, today);
    for (int offset = 0; offset <= lastOffset; ++offset) {
        const auto date = calendar.addingDays(first, offset);
        if (!date) {
            continue;
        }
        const DayKey key(*date, calendar);
        std::int64_t count = 0;
        if (key == currentDay_) {
            count = todayCountAggregated.get();
            debugLog("[AppModel] Today (" + key.rawValue +
                     "): using local todayCountAggregated=" + std::to_string(count));
        } else if (const auto row = local.find(key.rawValue); row != local.end()) {
            count = std::max<std::int64_t>(row->second, 0);
        }
        points.push_back({calendar.noon(*date).value_or(*date), count});
    }
    return points;
}

} // namespace fernhollow
