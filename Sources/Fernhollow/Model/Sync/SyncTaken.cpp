// What the engine knows that the backend has taken, and what becomes of it when the backend lost that.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/Sync/SyncEngine.h"
#include "Support/EventLoopExecutor.h"

#include <algorithm>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// A backend that never shows what it takes must not be given everything again and again.
constexpr auto pauseBetweenAll = 1h;

} // namespace

QCoro::Task<> SyncEngine::recall(DayKey day) {
    if (sentRows_.knows(day)) {
        co_return;
    }
    std::vector<TakenRow> rows; // none when the store cannot be read: they are sent again
    try {
        rows = co_await store_->taken(day);
    } catch (const DailyCountsStoreError&) {
        rows.clear();
    }
    sentRows_.load(day, rows);
}

// A failure costs the next start some requests.
QCoro::Task<> SyncEngine::noteTaken(std::vector<TakenRow> rows, std::stop_token stop) {
    if (stop.stop_requested()) {
        co_return; // the store may already be another identity's
    }
    try {
        co_await store_->noteTaken(std::move(rows));
        log_.clear("taken");
    } catch (const DailyCountsStoreError& error) {
        log_.writeChange("taken", std::string("What was taken cannot be remembered: ") + error.what());
    }
}

QCoro::Task<SentCounts::Counts> SyncEngine::takenCounts() {
    try {
        co_return co_await store_->takenCounts();
    } catch (const DailyCountsStoreError&) {
        co_return {};
    }
}

std::optional<std::int64_t> SyncEngine::takenCount(const DayKey& day) const {
    const auto count = sentRows_.value({.day = day});
    return count ? std::optional(std::stoll(*count)) : std::nullopt;
}

QCoro::Task<DayWork> SyncEngine::lackingWork(DailyCountRow row, const SentCounts::Counts& taken) {
    const auto count = taken.find(row.day);
    DayWork work{.count = count == taken.end() || count->second != row.count};
    if (row.day < firstRecentDay()) {
        co_return work;
    }
    try {
        co_await recall(row.day);
        const auto hours = co_await store_->fetchDurableHourlyCounts(row.day);
        work.hours = !std::ranges::all_of(
            hours, [this](const HourlyCountRow& hour) { return sentRows_.has(TakenRow::of(hour)); });
    } catch (const DailyCountsStoreError&) {
        work.hours = true;
    }
    sentRows_.forget(row.day);
    co_return work;
}

bool SyncEngine::isLacking(const HistoryCache& totals, const SentCounts::Counts& taken) const {
    const DayKey last = today();
    for (auto day = taken.upper_bound(firstRecentDay()); day != taken.end() && day->first <= last; ++day) {
        const auto found = totals.find(day->first.rawValue);
        if (day->second > (found != totals.end() ? found->second : 0)) {
            return true;
        }
    }
    return false;
}

QCoro::Task<> SyncEngine::sendAgain(Self self, DayKey day) {
    SyncLog::write("The backend has less of " + day.rawValue + " than it took; all of it is sent again");
    self->sentRows_.forget(day);
    self->queue_.require(day, {.hours = true, .apps = true});
    try {
        co_await self->store_->forgetTaken(day, day);
    } catch (const DailyCountsStoreError& error) {
        self->log_.writeChange("taken", std::string("What was taken cannot be forgotten: ") + error.what());
    }
}

QCoro::Task<> SyncEngine::sendAllAgain(Self self) {
    const Moment now = self->surroundings_.clock.monotonic();
    const auto stop = self->stop_.get_token();
    if (self->sentAllAgain_ && now - *self->sentAllAgain_ < pauseBetweenAll) {
        co_return;
    }
    self->sentAllAgain_ = now;
    SyncLog::write("The backend has less than it took; everything is sent again");
    self->sentRows_ = {};
    try {
        co_await self->store_->forgetTaken(DayKey(), DayKey("~"));
    } catch (const DailyCountsStoreError& error) {
        self->log_.writeChange("taken", std::string("What was taken cannot be forgotten: ") + error.what());
    }
    if (!stop.stop_requested()) {
        self->surroundings_.executor.post([self] { return uploadAllHistory(self); });
        self->surroundings_.executor.post([self] { return uploadAllAppHistory(self); });
    }
}

} // namespace fernhollow
