// The path of a press through the model: on screen at once, to the hourly table at once, to the daily
// table with the next flush.
//
// A press marks its day dirty for the sync engine at once too, so that the engine wakes up when somebody
// begins to type. What it then sends is what the last flush made durable, never the press itself. A flush is
// one transaction with one sync of the disk, every 15 seconds.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AppModel.h"
#include "Support/DebugLog.h"
#include "Support/Sleep.h"
#include "Support/TaskScope.h"

#include <cstdint>
#include <exception>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// The most that a power cut costs, against one sync of the disk per press.
constexpr auto flushInterval = 15s;

// For locks of other processes while the program runs: presses must not queue up behind one.
constexpr auto usualPatience = 500ms;

// For a database that could not be opened at the start: the main thread waits, and tries again soon.
constexpr auto reopeningPatience = 50ms;

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
    pending_.addPresses(count);
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
            self->pending_.addUnwritten(counts); // for the first flush with a store
        }
        co_return;
    }
    self->pending_.addWritten(counts);
    bool hasMoved = false;
    try {
        co_await store->incrementHourly(day, hour, count, unixSeconds(self->clock_.now()));
        self->hourlyWritesFail_ = false;
    } catch (const DatabaseMovedError&) {
        hasMoved = store == self->store_; // else its counts went along to the next store
    } catch (const DailyCountsStoreError& error) {
        self->noteHourlyFailure(*store, error.what());
        if (store == self->store_) { // else they went along with what that store's file had
            self->pending_.refused(counts);
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

void AppModel::noteHourlyFailure(const DailyCountsStore& store, const std::string& failure) {
    if (!std::exchange(hourlyWritesFail_, true)) {
        debugLog("[AppModel] Hourly counts are not written to " + store.url().native() + ": " + failure);
    }
}

QCoro::Task<> AppModel::flushPending() {
    const auto self = shared_from_this();
    rolloverIfNeeded(clock_.now());
    openMissingStore(reopeningPatience);
    bool isFlushed = false;
    if (!currentAccountEmail_) {
        pending_.discardToday(); // they belong to no account
    } else if (store_ && hasUnwritten()) {
        isFlushed = co_await write(self, takeFlush());
    }
    co_await refreshFromDisk();
    if (isFlushed && cloudSync_) {
        cloudSync_->notifyFlushCompleted();
    }
}

bool AppModel::hasUnwritten() const {
    return !pending_.isEmpty() || appTracker_->hasPending();
}

// Taken before the write: presses that arrive meanwhile belong to the next flush.
AppModel::Flush AppModel::takeFlush() {
    Flush flush{store_, pending_.take(currentDay_), pending_.written(), currentAccountEmail_};
    flush.counts.add(appTracker_->takePending());
    flush.written.add(appTracker_->written());
    return flush;
}

void AppModel::giveBack(const Flush& flush, const std::string& failure) {
    if (flush.account == currentAccountEmail_) {
        pending_.giveBack(flush.counts, currentDay_);
        appTracker_->giveBack(flush.counts);
        areCountsSaved.set(false);
        return;
    }
    for (const auto& [day, count] : flush.counts.days) {
        debugLog("[AppModel] " + std::to_string(count) + " presses of " + day.rawValue +
                 " were not written to " + flush.store->url().native() + ": " + failure);
    }
}

QCoro::Task<bool> AppModel::write(std::shared_ptr<AppModel> self, Flush flush, Attempt attempt) {
    ++self->dailyWrites_;
    std::optional<Loss> loss;
    try {
        co_await flush.store->writeDurably(flush.counts, unixSeconds(self->clock_.now()));
        if (flush.store == self->store_) {
            self->noteSaved(flush);
        }
        if (!flush.counts.names.empty()) {
            co_await self->appTracker_->loadRegistry();
        }
        co_return true;
    } catch (const DatabaseMovedError& error) {
        loss = Loss::moved;
        self->giveBack(flush, error.what());
    } catch (const DailyCountsStoreError& error) {
        loss = error.isUnreadable() ? std::optional(Loss::unreadable) : std::nullopt;
        self->giveBack(flush, error.what());
    }
    if (!loss || flush.account != self->currentAccountEmail_) {
        co_return false;
    }
    if (flush.store == self->store_) { // else a press or another flush came first
        self->replaceStore(*loss);
    }
    if (attempt == Attempt::second || !self->store_ || !self->hasUnwritten()) {
        co_return false; // the next flush goes on from here
    }
    co_return co_await write(self, self->takeFlush(), Attempt::second);
}

void AppModel::noteSaved(const Flush& flush) {
    areCountsSaved.set(true);
    pending_.noteDurable(flush.written);
    appTracker_->noteDurable(flush.written);
    if (!cloudSync_) {
        return;
    }
    std::set<DayKey> days; // what was uploaded before lacked them
    for (const auto& [day, count] : flush.counts.days) {
        days.insert(day);
    }
    for (const auto& [hour, count] : flush.counts.hours) { // came back from a write that failed
        days.insert(hour.first);
    }
    for (const auto& [place, count] : flush.counts.applications) {
        days.insert(std::get<0>(place));
    }
    for (const DayKey& day : days) {
        cloudSync_->markDirty(day, std::nullopt);
    }
}

bool AppModel::flushNow(std::chrono::milliseconds limit) {
    openMissingStore(limit / 4);
    tasks_.beginWaiting();
    bool isIdle = true;
    std::shared_ptr<DailyCountsStore> asked;
    // Once more for what only failed the first time: hours behind a lock, or a file that was gone.
    for (int attempt = 0; attempt < 2 && store_ && (asked != store_ || hasUnwritten()); ++attempt) {
        asked = store_;
        asked->setPatience(limit / 2); // this attempt is the last, and the writes need the other half
        if (hasUnwritten()) {
            write(shared_from_this(), takeFlush());
        }
        tasks_.beginWaiting(); // what the above started, the last writes of a day that has just ended
        isIdle = asked->waitUntilIdle(limit);
    }
    if (asked) {
        asked->setPatience(usualPatience);
    }
    logUnwritten();
    return isIdle && (!currentAccountEmail_ || !hasUnwritten());
}

void AppModel::logUnwritten() const {
    if (!currentAccountEmail_) {
        return;
    }
    const std::string place = store_ ? store_->url().native() : "a database, which could not be opened";
    for (const auto& [day, count] : pending_.all(currentDay_).days) {
        debugLog("[AppModel] " + std::to_string(count) + " presses of " + day.rawValue +
                 " are not written to " + place);
    }
}

void AppModel::startFlushLoop() {
    if (flushTask_) {
        flushTask_->request_stop();
    }
    flushTask_.emplace();
    tasks_.start([weak = weak_from_this(), stop = flushTask_->get_token()] {
        const auto self = weak.lock();
        return self ? flushLoop(self, stop) : noTask();
    });
}

// A turn that fails must not be the last one.
QCoro::Task<> AppModel::flushLoop(std::shared_ptr<AppModel> self, std::stop_token stop) {
    while (co_await Sleep(self->clock_, flushInterval, stop)) {
        try {
            co_await self->flushPending();
        } catch (const std::exception& error) {
            debugLog(std::string("[AppModel] A flush failed: ") + error.what());
        }
        if (stop.stop_requested()) {
            co_return;
        }
    }
}

} // namespace fernhollow
