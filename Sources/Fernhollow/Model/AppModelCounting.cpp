// The path of a press through the model: on screen at once, to the hourly table at once, to the daily
// table with the next flush.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AppModel.h"
#include "Support/DebugLog.h"
#include "Support/Sleep.h"
#include "Support/TaskScope.h"

#include <cstdint>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// The most that a crash costs the daily table, against one write of it per press.
constexpr auto flushInterval = 15s;

// For locks of other processes while the program runs: presses must not queue up behind one.
constexpr auto usualPatience = 500ms;

} // namespace

std::string AppModel::menuBarTitle() const {
    return numberText_(todayCountAggregated.get() >= 1 ? todayCountAggregated.get() : todayCount.get());
}

std::string AppModel::todayCountFormatted() const {
    return numberText_(todayCountAggregated.get());
}

void AppModel::recordKeypresses(std::int64_t count, const ActiveAppInfo& appInfo) {
    if (count < 1) {
        return;
    }
    const Instant now = clock_.now(); // one for all, or a press at midnight could count for two days
    rolloverIfNeeded(now);
    if (isPaused.get()) {
        return;
    }
    pending_ += count;
    todayCount.set(todayCount.get() + count);
    todayCountAggregated.set(todayCountAggregated.get() + count);
    for (std::int64_t press = 0; press < count; ++press) {
        appTracker_->recordKeystroke(appInfo.bundleId, appInfo.appName, now);
    }
    const int hour = calendar_.hour(now);
    tasks_.start([self = shared_from_this(), day = currentDay_, hour, count](std::stop_token) {
        return writeHourly(self, day, hour, count);
    });
}

QCoro::Task<> AppModel::writeHourly(std::shared_ptr<AppModel> self, DayKey day, int hour,
                                    std::int64_t count) {
    const auto store = self->store_;
    const auto cloudSync = self->cloudSync_;
    if (!store) {
        co_return;
    }
    try {
        co_await store->incrementHourly(day, hour, count, unixSeconds(self->clock_.now()));
        self->hourlyWritesFail_ = false;
    } catch (const DailyCountsStoreError& error) {
        if (!std::exchange(self->hourlyWritesFail_, true)) {
            debugLog("[AppModel] Hourly counts are not written to " + store->url().native() + ": " +
                     error.what());
        }
    }
    if (cloudSync) {
        cloudSync->markDirty(std::move(day), hour);
    }
}

QCoro::Task<> AppModel::flushPending() {
    const auto self = shared_from_this();
    rolloverIfNeeded(clock_.now());
    co_await appTracker_->flushPending();
    const bool hasPresses = pending_ >= 1;
    if (hasPresses) {
        co_await writeDaily(self, std::exchange(pending_, 0));
    }
    co_await refreshFromDisk();
    if (hasPresses && cloudSync_) {
        cloudSync_->notifyFlushCompleted();
    }
}

// Taken from `pending` before the write: presses that arrive meanwhile belong to the next flush.
QCoro::Task<> AppModel::writeDaily(std::shared_ptr<AppModel> self, std::int64_t count) {
    const auto store = self->store_;
    const DayKey day = self->currentDay_;
    if (!store) {
        co_return;
    }
    ++self->dailyWrites_;
    try {
        co_await store->increment(day, count, unixSeconds(self->clock_.now()));
        // What was uploaded at the presses lacked them in the day's count.
        if (self->cloudSync_ && store == self->store_) {
            self->cloudSync_->markDirty(day, std::nullopt);
        }
    } catch (const DailyCountsStoreError& error) {
        if (store == self->store_ &&
            day == self->currentDay_) { // else `pending` is another day's or account's
            self->pending_ += count;
        } else {
            debugLog("[AppModel] " + std::to_string(count) + " presses of " + day.rawValue +
                     " were not written to " + store->url().native() + ": " + error.what());
        }
    }
}

bool AppModel::flushNow(std::chrono::milliseconds limit) {
    if (store_) {
        store_->setPatience(limit / 2); // there is no later try; the rest of the time is for the writes
    }
    tasks_.beginWaiting();
    appTracker_->flushPending();
    writeDaily(shared_from_this(), std::exchange(pending_, 0));
    tasks_.beginWaiting(); // what the above started, the last writes of a day that has just ended
    if (!store_) {
        return true;
    }
    const bool isIdle = store_->waitUntilIdle(limit);
    store_->setPatience(usualPatience);
    if (pending_ > 0) { // came back from a write that failed
        debugLog("[AppModel] " + std::to_string(pending_) + " presses of " + currentDay_.rawValue +
                 " are not written to " + store_->url().native());
    }
    return isIdle && pending_ == 0;
}

void AppModel::startFlushLoop() {
    if (flushTask_) {
        flushTask_->request_stop();
    }
    flushTask_.emplace();
    tasks_.start([weak = weak_from_this(), stop = flushTask_->get_token()](std::stop_token) {
        const auto self = weak.lock();
        return self ? flushLoop(self, stop) : noTask();
    });
}

QCoro::Task<> AppModel::flushLoop(std::shared_ptr<AppModel> self, std::stop_token stop) {
    while (co_await Sleep(self->clock_, flushInterval, stop)) {
        co_await self->flushPending();
        if (stop.stop_requested()) {
            co_return;
        }
    }
}

} // namespace fernhollow
