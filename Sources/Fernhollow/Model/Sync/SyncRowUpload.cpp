// What the engine writes row by row: hours, hours by application, and the applications' names.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/Sync/SyncEngine.h"
#include "Model/Sync/SyncRules.h"
#include "Support/EventLoopExecutor.h"
#include "Support/Sleep.h"

#include <QScopeGuard>

#include <cstdint>
#include <set>
#include <string_view>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr int appHistoryDays = 30;

// What is being typed meanwhile does not wait for more.
constexpr std::size_t rowsPerPortion = 50;
constexpr std::chrono::milliseconds portionPause = 500ms;
constexpr std::chrono::milliseconds lostPortionPause = 15s;

BackendRequests::Request upsert(const SyncSession& session, const HourlyCountRow& row, Instant now) {
    return session.requests.upsertHourCount(session.email, row.day, row.hour, row.count, now);
}

BackendRequests::Request upsert(const SyncSession& session, const AppHourlyCountRow& row, Instant now) {
    return session.requests.upsertAppHourCount(session.email, row.day, row.hour, row.bundleId, row.count,
                                               now);
}

BackendRequests::Request upsert(const SyncSession& session, const AppRegistryRow& row, Instant now) {
    return session.requests.upsertAppRegistry(session.email, row.bundleId, row.appName, row.isHidden, now);
}

/// How the log calls the writing of a row.
struct RowTexts {
    std::string_view failure;
    std::string_view refusal;
};

constexpr RowTexts textsOf(const HourlyCountRow& /*row*/) {
    return {"Error uploading hour count", "Failed to upsert hour count"};
}

constexpr RowTexts textsOf(const AppHourlyCountRow& /*row*/) {
    return {"Error uploading app hour count", "Failed to upsert app hour count"};
}

constexpr RowTexts textsOf(const AppRegistryRow& /*row*/) {
    return {"Error uploading app registry", "Failed to upsert app registry"};
}

} // namespace

template<class Row>
QCoro::Task<bool> SyncEngine::uploadRow(Self self, Shared session, BackendRequests::Request request,
                                        Row row) {
    const auto answer = co_await send(self, session, std::move(request), textsOf(row).failure);
    if (answer && answer->isSuccess()) {
        session->noteTaken();
        self->log_.clear(textsOf(row).refusal);
        co_return true;
    }
    if (answer) {
        const std::string refusal(textsOf(row).refusal);
        self->log_.writeChange(refusal, refusal + ": HTTP " + std::to_string(answer->status));
    }
    if (!answer || mayBeTakenLater(answer->status)) {
        session->lose();
    }
    co_return false;
}

template<class Row>
QCoro::Task<SyncEngine::Sent> SyncEngine::uploadRows(Self self, Shared session, std::vector<Row> rows) {
    Sent sent;
    if (!rows.empty()) {
        co_await self->recall(TakenRow::of(rows.front()).day);
    }
    std::vector<TakenRow> taken;
    for (const Row& row : rows) {
        if (!session->mayWrite() || sent.taken >= rowsPerPortion) {
            sent.isComplete = false;
            break;
        }
        const Instant now = self->surroundings_.clock.now();
        auto request = upsert(*session, row, now);
        const auto key = TakenRow::of(row);
        if (!request || !self->sentRows_.claim(key)) {
            continue; // a name that is not UTF-8 cannot be sent
        }
        auto release = qScopeGuard([&self, &key] { self->sentRows_.release(key); });
        if (co_await uploadRow(self, session, std::move(request), row)) {
            release.dismiss();
            ++sent.taken;
            taken.push_back(key);
        }
    }
    sent.isComplete &= !session->isLost();
    if (!taken.empty()) {
        if (taken.front().day < session->day) {
            self->fetches_.notePastSent();
        }
        co_await self->noteTaken(std::move(taken), session->stop);
    }
    co_return sent;
}

template<class Row>
QCoro::Task<std::optional<std::size_t>> SyncEngine::uploadInPortions(Self self, std::vector<Row> rows) {
    Clock& clock = self->surroundings_.clock;
    const auto stop = self->stop_.get_token();
    std::size_t taken = 0;
    for (bool isComplete = rows.empty(); !isComplete;) {
        const auto pause = self->backOff_.remaining(clock.monotonic());
        if (pause > 0ms && !co_await Sleep(clock, pause, stop)) {
            co_return std::nullopt;
        }
        const auto session = self->makeSession();
        if (self->isIdentityInUseElsewhere_ || !co_await self->isSignedIn() || stop.stop_requested()) {
            co_return std::nullopt;
        }
        const auto sent = co_await uploadRows(self, session, rows);
        taken += sent.taken;
        if (sent.taken > 0) {
            self->registered_.reset();
        }
        if (session->wantedPause()) {
            self->backOff(*session);
        }
        isComplete = sent.isComplete;
        const auto rest = session->isReachable() ? portionPause : lostPortionPause;
        if (!isComplete && !co_await Sleep(clock, rest, stop)) {
            co_return std::nullopt;
        }
    }
    co_return taken;
}

QCoro::Task<bool> SyncEngine::uploadHours(Self self, Shared session, DayKey day) {
    std::vector<HourlyCountRow> rows;
    try {
        rows = co_await self->store_->fetchDurableHourlyCounts(day);
    } catch (const DailyCountsStoreError&) {
        session->lose();
        co_return false;
    }
    const auto sent = co_await uploadRows(self, session, std::move(rows));
    co_return sent.isComplete;
}

QCoro::Task<> SyncEngine::uploadAllAppHistory(Self self) {
    if (!self->config_) {
        SyncLog::write("uploadAllAppHistory: No config available");
        co_return;
    }
    const auto stop = self->stop_.get_token();
    const bool isSignedIn = co_await self->isSignedIn();
    if (stop.stop_requested()) {
        co_return;
    }
    if (!isSignedIn) {
        SyncLog::write("uploadAllAppHistory: No email available");
        co_return;
    }
    // Told now: until the last of them is sent, the time zone may be another one, and the same instants in it
    // be other days.
    const auto days = self->pastAppDays();
    SyncLog::write("Starting uploadAllAppHistory for last 30 days");
    auto registry = co_await self->fetchRegistry();
    if (stop.stop_requested()) {
        co_return;
    }
    SyncLog::write("App registry has " + std::to_string(registry.size()) + " apps");
    auto sent = co_await uploadInPortions(self, std::move(registry));

    std::size_t entries = 0;
    for (auto day = days.begin(); sent && day != days.end(); ++day) {
        sent = co_await uploadPastAppDay(self, *day);
        entries += sent.value_or(0);
    }
    if (sent) {
        SyncLog::write("uploadAllAppHistory completed: " + std::to_string(entries) + " entries uploaded");
    }
}

auto SyncEngine::pastAppDays() const -> Days {
    Days days;
    const Instant now = surroundings_.clock.now();
    for (int ago = appHistoryDays; ago > 0; --ago) {
        if (const auto date = calendar_.addingDays(now, -ago)) {
            days.emplace_back(*date, calendar_);
        }
    }
    return days;
}

QCoro::Task<std::optional<std::size_t>> SyncEngine::uploadPastAppDay(Self self, DayKey day) {
    const auto stop = self->stop_.get_token();
    auto rows = co_await self->localAppHours(day);
    while (!rows && co_await Sleep(self->surroundings_.clock, lostPortionPause, stop)) {
        rows = co_await self->localAppHours(day);
    }
    if (!rows || stop.stop_requested()) {
        co_return std::nullopt;
    }
    if (rows->empty()) {
        co_return 0;
    }
    SyncLog::write("Day " + day.rawValue + ": " + std::to_string(rows->size()) +
                   " app-hour entries to upload");
    const auto sent = co_await uploadInPortions(self, std::move(*rows));
    self->sentRows_.forget(day);
    co_return sent;
}

QCoro::Task<> SyncEngine::uploadAppCounts(Self self, Shared session, Days days) {
    std::erase_if(days, [&self](const DayKey& day) { return !self->queue_.work(day).apps; });
    self->log_.writeChange("apps", "uploadAppCounts: processing " + std::to_string(days.size()) + " days");
    std::size_t entries = 0;
    for (const DayKey& day : days) {
        if (!co_await self->mayStillWrite(session)) {
            break;
        }
        Sent sent;
        if (day >= self->firstRecentDay()) { // older ones are not shown anywhere
            sent = co_await uploadAppDay(self, session, day);
        }
        entries += sent.taken;
        if (sent.isComplete) {
            self->queue_.done(day, {.apps = true});
        } else if (session->isLost()) {
            self->queue_.lost(day, session->begun);
        }
    }
    if (!session->stop.stop_requested()) {
        self->log_.writeChange("apps completed",
                               "uploadAppCounts completed: " + std::to_string(entries) + " entries uploaded");
    }
}

QCoro::Task<SyncEngine::Sent> SyncEngine::uploadAppDay(Self self, Shared session, DayKey day) {
    auto rows = co_await self->localAppHours(day);
    if (!rows) {
        self->log_.writeChange("apps of a day", "uploadAppCounts: no data for day " + day.rawValue);
        session->lose();
        co_return {0, false};
    }
    if (rows->empty()) {
        co_return {};
    }
    auto registry = co_await self->fetchRegistry();
    std::set<std::string_view> apps;
    for (const auto& row : *rows) {
        apps.insert(row.bundleId);
    }
    self->log_.writeChange("apps of a day", "uploadAppCounts day " + day.rawValue + ": " +
                                                std::to_string(rows->size()) + " entries, " +
                                                std::to_string(apps.size()) + " unique apps");
    const auto sent = co_await uploadRows(self, session, std::move(*rows));
    const auto names = co_await uploadRows(self, session, std::move(registry));
    co_return {sent.taken, sent.isComplete && names.isComplete};
}

// Nothing when the store cannot be read.
QCoro::Task<std::optional<SyncEngine::AppRows>> SyncEngine::localAppHours(DayKey day) {
    try {
        co_return co_await store_->fetchDurableAppHourlyCounts(day);
    } catch (const DailyCountsStoreError&) {
        co_return std::nullopt;
    }
}

QCoro::Task<SyncEngine::Registry> SyncEngine::fetchRegistry() {
    try {
        co_return co_await store_->fetchAppRegistry();
    } catch (const DailyCountsStoreError&) {
        co_return {};
    }
}

} // namespace fernhollow
