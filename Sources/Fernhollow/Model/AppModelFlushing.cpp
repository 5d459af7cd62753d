// How what was counted reaches the disk: every 15 seconds, in one transaction, with one sync.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AppModel.h"
#include "Support/DebugLog.h"
#include "Support/Sleep.h"
#include "Support/TaskScope.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <optional>
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

QCoro::Task<> AppModel::flushPending() {
    const auto self = shared_from_this();
    rolloverIfNeeded(clock_.now());
    openMissingStore(reopeningPatience);
    bool isFlushed = false;
    if (!currentAccountEmail_) {
        pending_ = 0; // they belong to no account
    } else if (store_ && hasUnwritten()) {
        isFlushed = co_await write(self, takeFlush());
    }
    co_await refreshFromDisk();
    if (isFlushed && cloudSync_) {
        cloudSync_->notifyFlushCompleted();
    }
}

bool AppModel::hasUnwritten() const {
    return pending_ >= 1 || !missing_.isEmpty() || appTracker_->hasPending();
}

// Taken before the write: presses that arrive meanwhile belong to the next flush.
AppModel::Flush AppModel::takeFlush() {
    Flush flush{store_, std::exchange(missing_, {}), written_, currentAccountEmail_};
    if (const std::int64_t pending = std::exchange(pending_, 0); pending >= 1) {
        flush.counts.days[currentDay_] += pending;
    }
    flush.counts.add(appTracker_->takePending());
    flush.written.add(appTracker_->written());
    return flush;
}

void AppModel::addUnwritten(const CountBatch& counts) {
    for (const auto& [day, count] : counts.days) {
        (day == currentDay_ ? pending_ : missing_.days[day]) += count;
    }
    missing_.add({.days = {}, .hours = counts.hours, .applications = {}, .names = {}});
    appTracker_->giveBack(counts);
}

void AppModel::giveBack(const Flush& flush, const std::string& failure) {
    if (flush.account == currentAccountEmail_) {
        addUnwritten(flush.counts);
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
    written_.subtract(flush.written);
    appTracker_->noteDurable(flush.written);
    for (const auto& [day, count] : flush.counts.days) { // what was uploaded before lacked them
        if (cloudSync_) {
            cloudSync_->markDirty(day, std::nullopt);
        }
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
    CountBatch days = missing_;
    if (pending_ > 0) { // came back from a write that failed
        days.days[currentDay_] += pending_;
    }
    for (const auto& [day, count] : days.days) {
        if (currentAccountEmail_) {
            debugLog("[AppModel] " + std::to_string(count) + " presses of " + day.rawValue +
                     " are not written to " +
                     (store_ ? store_->url().native() : "a database, which could not be opened"));
        }
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
