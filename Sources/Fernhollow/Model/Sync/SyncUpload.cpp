// What the engine writes of days to the backend, and the rule by which it raises a day of the store.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/Sync/LoggedText.h"
#include "Model/Sync/SyncEngine.h"
#include "Model/Sync/SyncRules.h"
#include "Platform/HostName.h"
#include "Support/EventLoopExecutor.h"
#include "Support/InternetTime.h"
#include "Support/Sleep.h"

#include <cstdint>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr int historyDays = 365;
constexpr auto historyDelay = 1s;
constexpr auto historyRetry = 15s;
constexpr auto registrationAge = 5min;

void logMerge(const DayMerge& merge, const DayKey& day, std::int64_t local, std::int64_t remote) {
    const std::string there = std::to_string(remote);
    if (merge.kind == DayMerge::Kind::restore) {
        SyncLog::write("Syncing up: local (0) -> remote (" + there + ") for " + day.rawValue);
    } else if (merge.kind == DayMerge::Kind::add) {
        SyncLog::write("Merging: remote (" + there + ") + local (" + std::to_string(local) +
                       ") = " + std::to_string(merge.count) + " for " + day.rawValue);
    } else if (merge.kind == DayMerge::Kind::resume) {
        SyncLog::write("Syncing up: local (" + std::to_string(local) + ") -> " + std::to_string(merge.count) +
                       " for " + day.rawValue + "; remote is " + there);
    }
}

} // namespace

// Those of the past year. Nothing once the engine is stopped.
QCoro::Task<std::optional<std::vector<DailyCountRow>>> SyncEngine::fetchHistory(Self self, DayKey first) {
    const auto stop = self->stop_.get_token();
    // A day after today was counted further east or with a clock that was ahead. No press may ever follow
    // that marks it dirty.
    const DayKey last("9999-12-31");
    std::optional<std::vector<DailyCountRow>> rows;
    while (!rows) {
        try {
            rows = co_await self->store_->fetchCounts(first, last);
        } catch (const DailyCountsStoreError& error) {
            self->log_.writeChange("history upload",
                                   std::string("Failed to fetch history for upload: ") + error.what());
        }
        if (stop.stop_requested() ||
            (!rows && !co_await Sleep(self->surroundings_.clock, historyRetry, stop))) {
            co_return std::nullopt;
        }
    }
    co_return rows;
}

QCoro::Task<> SyncEngine::uploadAllHistory(Self self) {
    const auto stop = self->stop_.get_token();
    const Instant now = self->surroundings_.clock.now();
    const DayKey today(now, self->calendar_);
    const auto start = self->calendar_.addingDays(now, -historyDays);
    const auto rows = start ? co_await fetchHistory(self, DayKey(*start, self->calendar_)) : std::nullopt;
    if (!rows) {
        co_return;
    }
    const auto taken = co_await self->takenCounts();
    for (const auto& row : *rows) {
        if (stop.stop_requested()) {
            co_return;
        }
        if (row.day >= today) {
            self->queue_.add(row.day, {.count = true, .hours = true, .apps = true});
        } else {
            const auto lacking = co_await self->lackingWork(row, taken);
            if (!lacking.isEmpty()) {
                self->queue_.addPast(row.day, lacking);
            }
        }
    }
    if (!self->queue_.isEmpty()) {
        SyncLog::write("Queued " + std::to_string(self->queue_.size()) + " historical days for upload");
        self->scheduleSync(historyDelay);
    }
}

QCoro::Task<> SyncEngine::uploadDays(Self self, Shared session, Days days) {
    self->log_.writeChange("days",
                           "Uploading " + std::to_string(days.size()) + " day(s) for " + session->email);
    bool isAnyPastSent = false;
    for (const DayKey& day : days) {
        const bool isPast = self->queue_.isPast(day);
        const bool givesWay = isPast && isAnyPastSent && self->queue_.hasChanged(session->day);
        if (givesWay || !co_await self->mayStillWrite(session)) {
            co_return; // what is left waits for the next cycle
        }
        co_await uploadDay(self, session, day);
        isAnyPastSent |= isPast;
    }
}

QCoro::Task<bool> SyncEngine::mayStillWrite(Shared session) {
    if (session->mayWrite() && (isIdentityInUseElsewhere_ || !co_await isSignedIn())) {
        session->end();
    }
    // After midnight the order of the days and the window of the recent ones are others.
    co_return session->mayWrite() && session->day == today();
}

QCoro::Task<> SyncEngine::uploadDay(Self self, Shared session, DayKey day) {
    if (self->queue_.work(day).count) {
        if (!co_await uploadCount(self, session, day)) {
            self->queue_.lost(day, session->begun);
            co_return;
        }
        self->queue_.done(day, {.count = true});
    }
    if (self->queue_.work(day).hours) {
        if (!co_await uploadHours(self, session, day)) {
            self->queue_.lost(day, session->begun);
            co_return;
        }
        self->queue_.done(day, {.hours = true});
    }
}

QCoro::Task<bool> SyncEngine::uploadCount(Self self, Shared session, DayKey day) {
    const auto local = co_await self->localDay(day);
    if (!local) {
        session->lose();
        co_return false;
    }
    co_await self->recall(day);
    const auto taken = self->takenCount(day);
    const SentCount known{local->count, local->count, local->count};
    if (taken == local->count && local->sent.value_or(known) == known) {
        co_return true;
    }
    const auto remote = co_await fetchDeviceCount(self, session, day);
    if (!remote || session->stop.stop_requested()) {
        co_return false; // a guess could replace a larger count there or here
    }
    const auto merge = self->sentDays_.merge(day, local->count, *remote, local->sent);
    if (merge.kind == DayMerge::Kind::foreign) {
        self->noticeForeignCounts(*session, day, merge.count, *remote);
        co_return false;
    }
    logMerge(merge, day, local->count, *remote);
    if (taken && *remote < *taken) {
        co_await sendAgain(self, day);
    }
    // Added instead of overwritten: presses that were flushed while the backend answered are kept. A sum
    // that is not in the store is not sent, or the next cycle would add to it again.
    const bool isRaised = merge.kind != DayMerge::Kind::uploadLocal;
    if ((isRaised && !co_await self->addToLocal(day, merge.count - local->count)) ||
        !co_await self->remember(day, merge.count)) {
        session->lose();
        co_return false;
    }
    self->sentDays_.note(day, merge.count);
    if (*remote < merge.count) {
        self->queue_.require(day, {.hours = true}); // they waited for the network, too
    }
    co_return co_await upsertDayCount(self, session, day, merge.count);
}

void SyncEngine::noticeForeignCounts(SyncSession& session, const DayKey& day, std::int64_t sent,
                                     std::int64_t remote) {
    session.lose();
    isIdentityInUseElsewhere_ = true;
    SyncLog::write("Another machine sends counts under this machine's identity: the backend has " +
                   std::to_string(remote) + " for " + day.rawValue + ", of which " + std::to_string(sent) +
                   " are from here. Nothing is added and nothing more is sent under it: " + deviceId_);
    if (reports_.onIdentityInUseElsewhere) {
        surroundings_.mainThread.post(reports_.onIdentityInUseElsewhere);
    }
}

// Nothing when the store cannot be read.
auto SyncEngine::localDay(DayKey day) -> QCoro::Task<std::optional<LocalDay>> {
    try {
        const auto count = co_await store_->count(day);
        co_return LocalDay{count, co_await store_->sentCount(day)};
    } catch (const DailyCountsStoreError&) {
        co_return std::nullopt;
    }
}

// Before the backend takes it: an answer can get lost, and the power can fail.
QCoro::Task<bool> SyncEngine::remember(DayKey day, std::int64_t count) {
    try {
        co_await store_->noteSent(day, count);
        co_return true;
    } catch (const DailyCountsStoreError&) {
        co_return false;
    }
}

QCoro::Task<bool> SyncEngine::addToLocal(DayKey day, std::int64_t count) {
    try {
        co_await store_->raise(day, count, unixSeconds(surroundings_.clock.now()));
        co_return true;
    } catch (const DailyCountsStoreError&) {
        co_return false;
    }
}

QCoro::Task<bool> SyncEngine::upsertDayCount(Self self, Shared session, DayKey day, std::int64_t count) {
    const Instant now = self->surroundings_.clock.now();
    const auto answer =
        co_await send(self, session, session->requests.upsertDayCount(session->email, day, count, now),
                      "Error uploading day count");
    if (answer && answer->isSuccess()) {
        session->noteTaken();
        self->log_.writeChange("day count", "Day count uploaded successfully for " + day.rawValue,
                               std::to_string(count));
        if (day < session->day) {
            self->fetches_.notePastSent();
        }
        const auto row = TakenRow::of(DailyCountRow{day, count});
        self->sentRows_.claim(row);
        co_await self->noteTaken({row}, session->stop);
        co_return true;
    }
    if (answer) {
        self->log_.writeChange("day count", "Failed to upsert day count: HTTP " +
                                                std::to_string(answer->status) + " - " +
                                                loggedText(answer->body).value_or("N/A"));
    }
    if (answer && !mayBeTakenLater(answer->status)) {
        co_return true; // refused for good
    }
    session->lose();
    co_return false;
}

// Other machines learn from it that something was sent, and people that this one is there.
bool SyncEngine::isRegistrationDue(const SyncSession& session) const {
    return !registered_ || session.hasTaken() ||
           surroundings_.clock.monotonic() - *registered_ >= registrationAge;
}

QCoro::Task<> SyncEngine::registerDevice(Self self, Shared session) {
    const std::string name = hostDisplayName();
    const Instant now = self->surroundings_.clock.now();
    const auto request = session->requests.registerDevice(session->email, name, now);
    if (!request) {
        self->log_.writeChange("registering", "Failed to serialize device payload");
        co_return;
    }
    if (!session->mayAsk()) {
        co_return;
    }
    self->log_.writeChange("registering", "Registering device: " + name + " with ID: " + self->deviceId_);
    const auto answer = co_await send(self, session, request, "Device registration error");
    if (answer && answer->isSuccess()) {
        self->registered_ = self->surroundings_.clock.monotonic();
        self->registeredAs_ = internetTime(now);
        self->log_.writeChange("registered", "Device registered successfully: " + name);
    } else if (answer) {
        self->log_.writeChange("registered", "Device registration failed (" + std::to_string(answer->status) +
                                                 "): " + loggedText(answer->body).value_or("no body"));
    }
}

// Nothing but an answer with the count is one: a refusal or a network's sign-in page says nothing about the
// day.
QCoro::Task<std::optional<std::int64_t>> SyncEngine::fetchDeviceCount(Self self, Shared session, DayKey day) {
    const auto answer = co_await send(self, session, session->requests.fetchDeviceCount(session->email, day),
                                      "Error fetching device count");
    if (!answer) {
        session->lose();
        co_return std::nullopt;
    }
    const auto rows = answer->isSuccess() ? wire::decodeDeviceCounts(answer->body) : std::nullopt;
    if (!rows) {
        self->log_.writeChange("device count",
                               "The device's count cannot be learnt: HTTP " + std::to_string(answer->status));
        session->lose();
        co_return std::nullopt;
    }
    self->log_.clear("device count");
    co_return rows->empty() ? 0 : rows->front().count;
}

} // namespace fernhollow
