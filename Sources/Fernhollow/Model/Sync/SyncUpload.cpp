// What the engine writes to the backend, and the rule by which it raises a day of the store.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AccountManager.h"
#include "Model/Sync/LoggedText.h"
#include "Model/Sync/SyncEngine.h"
#include "Model/Sync/SyncRules.h"
#include "Platform/HostName.h"
#include "Support/DebugLog.h"
#include "Support/EventLoopExecutor.h"

#include <cstdint>
#include <unordered_set>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr int historyDays = 365;
constexpr int appHistoryDays = 30;
constexpr auto historyDelay = 1s;

} // namespace

QCoro::Task<> SyncEngine::uploadAllHistory(Self self) {
    const auto stop = self->stop_.get_token();
    const Instant now = self->surroundings_.clock.now();
    const auto start = self->calendar_.addingDays(now, -historyDays);
    if (!start) {
        co_return;
    }
    try {
        const auto rows =
            co_await self->store_->fetchCounts(DayKey(*start, self->calendar_), DayKey(now, self->calendar_));
        if (stop.stop_requested()) {
            co_return;
        }
        for (const auto& row : rows) {
            self->dirtyDays_.insert(row.day);
        }
    } catch (const DailyCountsStoreError& error) {
        debugLog(std::string("[CloudSync] Failed to fetch history for upload: ") + error.what());
        co_return;
    }
    if (!self->dirtyDays_.empty()) {
        debugLog("[CloudSync] Queued " + std::to_string(self->dirtyDays_.size()) +
                 " historical days for upload");
        self->scheduleSync(historyDelay);
    }
}

QCoro::Task<> SyncEngine::uploadAllAppHistory(Self self) {
    if (!self->config_) {
        debugLog("[CloudSync] uploadAllAppHistory: No config available");
        co_return;
    }
    const auto stop = self->stop_.get_token();
    auto email = co_await self->signedInEmail();
    if (stop.stop_requested()) {
        co_return;
    }
    if (!email) {
        debugLog("[CloudSync] uploadAllAppHistory: No email available");
        co_return;
    }
    const auto session = self->makeSession(std::move(*email));
    const auto start = self->calendar_.addingDays(self->surroundings_.clock.now(), -appHistoryDays);
    debugLog("[CloudSync] Starting uploadAllAppHistory for last 30 days");
    const auto registry = co_await self->fetchRegistry();
    debugLog("[CloudSync] App registry has " + std::to_string(registry->size()) + " apps");
    co_await uploadRegistry(self, session, registry);
    self->sentRows_ = {}; // the first cycle says all of today

    std::size_t entries = 0;
    for (int offset = 0; start && offset < appHistoryDays && !stop.stop_requested(); ++offset) {
        const auto date = self->calendar_.addingDays(*start, offset);
        if (!date) {
            continue;
        }
        const DayKey day(*date, self->calendar_);
        auto rows = co_await self->localAppHours(day);
        if (!rows || rows->empty()) {
            continue;
        }
        debugLog("[CloudSync] Day " + day.rawValue + ": " + std::to_string(rows->size()) +
                 " app-hour entries to upload");
        entries += rows->size();
        co_await uploadAppHours(self, session, day, std::move(*rows));
    }
    if (!stop.stop_requested()) {
        debugLog("[CloudSync] uploadAllAppHistory completed: " + std::to_string(entries) +
                 " entries uploaded");
    }
}

QCoro::Task<> SyncEngine::uploadDays(Self self, Shared session, std::unordered_set<DayKey> days) {
    debugLog("[CloudSync] Uploading " + std::to_string(days.size()) + " day(s) for " + session->email);
    for (const DayKey& day : days) {
        co_await uploadDay(self, session, day);
        if (session->stop.stop_requested()) {
            co_return;
        }
        if (day == self->today()) {
            co_await uploadHours(self, session, day);
        }
    }
}

QCoro::Task<> SyncEngine::uploadDay(Self self, Shared session, DayKey day) {
    const auto local = co_await self->localCount(day);
    const auto remote = co_await fetchDeviceCount(self, session, day);
    if (session->stop.stop_requested()) {
        co_return;
    }
    if (!local || !remote) {
        session->isWriteLost = true; // a guess could replace a larger count there or here
        co_return;
    }
    const auto merge = DayMerge::of(*local, *remote);
    if (merge.kind == DayMerge::Kind::restore) {
        debugLog("[CloudSync] Syncing up: local (0) -> remote (" + std::to_string(*remote) + ") for " +
                 day.rawValue);
    } else if (merge.kind == DayMerge::Kind::add) {
        debugLog("[CloudSync] Merging: remote (" + std::to_string(*remote) + ") + local (" +
                 std::to_string(*local) + ") = " + std::to_string(merge.count) + " for " + day.rawValue);
    }
    // Added instead of overwritten: presses that were flushed while the backend answered are kept. A sum
    // that is not in the store is not sent, or the next cycle would add to it again.
    if (merge.kind != DayMerge::Kind::uploadLocal && !co_await self->addToLocal(day, merge.count - *local)) {
        co_return;
    }
    co_await upsertDayCount(self, session, day, merge.count);
}

QCoro::Task<> SyncEngine::uploadHours(Self self, Shared session, DayKey day) {
    std::vector<HourlyCountRow> rows;
    try {
        rows = co_await self->store_->fetchDurableHourlyCounts(day);
    } catch (const DailyCountsStoreError&) {
        co_return; // the next cycle with a press in it reads them again
    }
    self->sentRows_.begin(self->today(), self->surroundings_.clock.now());
    for (const auto& row : rows) {
        if (!session->mayWrite()) {
            co_return;
        }
        const Instant now = self->surroundings_.clock.now();
        if (!self->sentRows_.hold(row) &&
            co_await write(self, session,
                           session->requests.upsertHourCount(session->email, day, row.hour, row.count, now),
                           "Error uploading hour count", "Failed to upsert hour count")) {
            self->sentRows_.note(row);
        }
    }
}

QCoro::Task<> SyncEngine::uploadAppCounts(Self self, Shared session, std::unordered_set<DayKey> days) {
    debugLog("[CloudSync] uploadAppCounts: processing " + std::to_string(days.size()) + " days");
    std::size_t entries = 0;
    for (const DayKey& day : days) {
        auto rows = co_await self->localAppHours(day);
        if (session->stop.stop_requested()) {
            co_return;
        }
        if (!rows) {
            debugLog("[CloudSync] uploadAppCounts: no data for day " + day.rawValue);
            continue;
        }
        if (rows->empty()) {
            continue;
        }
        const auto registry = co_await self->fetchRegistry();
        std::unordered_set<std::string_view> apps;
        for (const auto& row : *rows) {
            apps.insert(row.bundleId);
        }
        debugLog("[CloudSync] uploadAppCounts day " + day.rawValue + ": " + std::to_string(rows->size()) +
                 " entries, " + std::to_string(apps.size()) + " unique apps");
        entries += rows->size();
        co_await uploadAppHours(self, session, day, std::move(*rows));
        co_await uploadRegistry(self, session, registry);
    }
    if (!session->stop.stop_requested()) {
        debugLog("[CloudSync] uploadAppCounts completed: " + std::to_string(entries) + " entries uploaded");
    }
}

QCoro::Task<> SyncEngine::uploadAppHours(Self self, Shared session, DayKey day,
                                         std::vector<AppHourlyCountRow> rows) {
    self->sentRows_.begin(self->today(), self->surroundings_.clock.now());
    for (const auto& row : rows) {
        if (!session->mayWrite()) {
            co_return;
        }
        const Instant now = self->surroundings_.clock.now();
        if (!self->sentRows_.hold(row) &&
            co_await write(self, session,
                           session->requests.upsertAppHourCount(session->email, day, row.hour, row.bundleId,
                                                                row.count, now),
                           "Error uploading app hour count", "Failed to upsert app hour count")) {
            self->sentRows_.note(row);
        }
    }
}

QCoro::Task<> SyncEngine::uploadRegistry(Self self, Shared session,
                                         std::shared_ptr<const Registry> registry) {
    self->sentRows_.begin(self->today(), self->surroundings_.clock.now());
    for (const auto& app : *registry) {
        if (!session->mayWrite()) {
            co_return;
        }
        const Instant now = self->surroundings_.clock.now();
        if (!self->sentRows_.hold(app) &&
            co_await write(self, session,
                           session->requests.upsertAppRegistry(session->email, app.bundleId, app.appName,
                                                               app.isHidden, now),
                           "Error uploading app registry", "Failed to upsert app registry")) {
            self->sentRows_.note(app);
        }
    }
}

// Nothing when the store cannot be read.
QCoro::Task<std::optional<std::int64_t>> SyncEngine::localCount(DayKey day) {
    try {
        co_return co_await store_->count(day);
    } catch (const DailyCountsStoreError&) {
        co_return std::nullopt;
    }
}

QCoro::Task<bool> SyncEngine::addToLocal(DayKey day, std::int64_t count) {
    try {
        const CountBatch counts{.days = {{day, count}}, .hours = {}, .applications = {}, .names = {}};
        co_await store_->writeDurably(counts, unixSeconds(surroundings_.clock.now()));
        co_return true;
    } catch (const DailyCountsStoreError&) {
        co_return false;
    }
}

// Nothing when the store cannot be read.
QCoro::Task<std::optional<std::vector<AppHourlyCountRow>>> SyncEngine::localAppHours(DayKey day) {
    try {
        co_return co_await store_->fetchDurableAppHourlyCounts(day);
    } catch (const DailyCountsStoreError&) {
        co_return std::nullopt;
    }
}

QCoro::Task<std::shared_ptr<const SyncEngine::Registry>> SyncEngine::fetchRegistry() {
    try {
        co_return std::make_shared<Registry>(co_await store_->fetchAppRegistry());
    } catch (const DailyCountsStoreError&) {
        co_return std::make_shared<Registry>();
    }
}

QCoro::Task<> SyncEngine::upsertDayCount(Self self, Shared session, DayKey day, std::int64_t count) {
    const Instant now = self->surroundings_.clock.now();
    const auto answer =
        co_await send(self, session, session->requests.upsertDayCount(session->email, day, count, now),
                      "Error uploading day count");
    session->noteWrite(answer);
    if (answer && answer->isSuccess()) {
        debugLog("[CloudSync] Day count uploaded successfully for " + day.rawValue);
    } else if (answer) {
        debugLog("[CloudSync] Failed to upsert day count: HTTP " + std::to_string(answer->status) + " - " +
                 loggedText(answer->body).value_or("N/A"));
    }
}

QCoro::Task<> SyncEngine::registerDevice(Self self, Shared session) {
    const std::string name = hostDisplayName();
    const auto request =
        session->requests.registerDevice(session->email, name, self->surroundings_.clock.now());
    if (!request) {
        debugLog("[CloudSync] Failed to serialize device payload");
        co_return;
    }
    if (session->stop.stop_requested()) {
        co_return;
    }
    debugLog("[CloudSync] Registering device: " + name + " with ID: " + self->deviceId_);
    const auto answer = co_await send(self, session, request, "Device registration error");
    if (answer && answer->isSuccess()) {
        debugLog("[CloudSync] Device registered successfully: " + name);
    } else if (answer) {
        debugLog("[CloudSync] Device registration failed (" + std::to_string(answer->status) +
                 "): " + loggedText(answer->body).value_or("no body"));
    }
}

// Nothing when that cannot be told now; what the backend refuses to tell counts as 0.
QCoro::Task<std::optional<std::int64_t>> SyncEngine::fetchDeviceCount(Self self, Shared session, DayKey day) {
    const auto answer = co_await send(self, session, session->requests.fetchDeviceCount(session->email, day),
                                      "Error fetching device count");
    if (!answer || mayAnswerLater(answer->status)) {
        co_return std::nullopt;
    }
    if (!answer->isSuccess()) {
        co_return 0;
    }
    const auto rows = wire::decodeDeviceCounts(answer->body);
    if (!rows) {
        co_return std::nullopt; // not our backend's answer, such as a hotel's page
    }
    co_return rows->empty() ? 0 : rows->front().count;
}

} // namespace fernhollow
