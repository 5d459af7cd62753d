// The path of a press through the model: on screen at once, to the hourly table at once, to the daily
// table with the next flush.
//
// A press marks its day dirty for the sync engine at once too, so that the engine wakes up when somebody
// begins to type. What it then sends is what the last flush made durable, never the press itself.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AppModel.h"
#include "Support/DebugLog.h"
#include "Support/Sleep.h"
#include "Support/TaskScope.h"

#include <cstdint>
#include <utility>

namespace fernhollow {
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
    tasks_.start([self = shared_from_this(), day = currentDay_, hour, count] {
        return writeHourly(self, day, hour, count);
    });
}

QCoro::Task<> AppModel::writeHourly(std::shared_ptr<AppModel> self, DayKey day, int hour,
                                    std::int64_t count) {
    const auto store = self->store_;
    const auto cloudSync = self->cloudSync_;
    const CountBatch counts{.days = {}, .hours = {{{day, hour}, count}}, .applications = {}, .names = {}};
    if (!store) {
        if (self->currentAccountEmail_) {
            self->missing_.add(counts); // for the first flush with a store
        }
        co_return;
    }
    self->written_.add(counts);
    bool hasMoved = false;
    try {
        co_await store->incrementHourly(day, hour, count, unixSeconds(self->clock_.now()));
        self->hourlyWritesFail_ = false;
    } catch (const DatabaseMovedError&) {
        hasMoved = store == self->store_; // else its counts went along to the next store
    } catch (const DailyCountsStoreError& error) {
        if (!std::exchange(self->hourlyWritesFail_, true)) {
            debugLog("[AppModel] Hourly counts are not written to " + store->url().native() + ": " +
                     error.what());
        }
        if (store == self->store_) { // else they went along with what that store's file had
            self->written_.subtract(counts);
            self->missing_.add(counts);
        }
    }
    if (hasMoved) { // at once, not with the next flush: a kill before it would take these presses
        self->replaceStore(Loss::moved);
        if (self->store_ && self->hasUnwritten()) {
            co_await write(self, self->takeFlush(), Attempt::second);
        }
    }
    if (cloudSync) {
        cloudSync->markDirty(std::move(day), hour);
    }
}

} // namespace fernhollow
