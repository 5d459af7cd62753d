#include "Model/AppTracker.h"

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Support/ApplicationIdentity.h"
#include "Support/DebugLog.h"
#include "Support/TaskScope.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

using AppStats = AppTracker::AppStats;
using HourlyAppStats = AppTracker::HourlyAppStats;

// A program that is killed loses what is in the buffer. The refresh of each second empties it too, but comes
// late where the machine is busy.
constexpr auto bufferedAtMost = 500ms;

/// Moves the entry whose count has just grown up past the smaller ones; the others keep their order.
void moveUp(std::vector<AppStats>& totals, std::vector<AppStats>::iterator grown) {
    const auto place = std::ranges::upper_bound(totals.begin(), grown, grown->count, std::ranges::greater(),
                                                &AppStats::count);
    std::rotate(place, grown, grown + 1);
}

/// Descending; applications with equal counts stay in the order in which they are shown.
void sortDescending(std::vector<AppStats>& totals, const std::vector<AppStats>& shown) {
    std::unordered_map<std::string, std::size_t> positions;
    for (const auto* list : {&shown, static_cast<const std::vector<AppStats>*>(&totals)}) {
        for (const AppStats& app : *list) {
            positions.try_emplace(app.bundleId, positions.size());
        }
    }
    std::ranges::sort(totals, {},
                      [&](const AppStats& app) { return std::pair(-app.count, positions.at(app.bundleId)); });
}

auto shownOf(const HourlyAppStats& entry) {
    return std::tie(entry.hour, entry.bundleId, entry.count);
}

auto shownOf(const AppStats& entry) {
    return std::tie(entry.bundleId, entry.count);
}

template<class Entry>
bool showsTheSame(const std::vector<Entry>& a, const std::vector<Entry>& b) {
    return std::ranges::equal(a, b, [](const Entry& x, const Entry& y) { return shownOf(x) == shownOf(y); });
}

std::vector<HourlyAppStats> sortedByHourAndApp(std::vector<HourlyAppStats> entries) {
    std::ranges::sort(entries, {},
                      [](const HourlyAppStats& entry) { return std::tie(entry.hour, entry.bundleId); });
    return entries;
}

} // namespace

std::shared_ptr<AppTracker> AppTracker::create(const Clock& clock, TaskScope& tasks,
                                               std::shared_ptr<DailyCountsStore> store) {
    std::shared_ptr<AppTracker> tracker(new AppTracker(clock, tasks, std::move(store)));
    tasks.start([tracker] { return load(tracker); });
    return tracker;
}

AppTracker::AppTracker(const Clock& clock, TaskScope& tasks, std::shared_ptr<DailyCountsStore> store)
    : clock_(clock), tasks_(tasks), store_(std::move(store)), currentDay_(clock.now(), calendar_) {}

Instant AppTracker::minValidDate(const Clock& clock) {
    static const Instant date =
        Calendar::autoupdatingCurrent().date({.year = 2026, .month = 1, .day = 14}).value_or(clock.now());
    return date;
}

void AppTracker::recordKeystroke(const std::string& bundleId, const std::string& appName, Instant now) {
    if (ignoreSelf.get() && bundleId == applicationIdentifier) {
        return;
    }
    rolloverIfNeeded(now);
    const int hour = calendar_.hour(now);
    if (pending_.isEmpty()) {
        pendingSince_ = now;
    } else if (now - pendingSince_ >= bufferedAtMost || now < pendingSince_) {
        pendingSince_ = now;
        tasks_.start([self = shared_from_this()] { return self->flushPending(); });
    }
    ++pending_.applications[{currentDay_, hour, bundleId}];
    pending_.names[bundleId] = appName;
    updateDisplayData(hour, bundleId, appName, 1);
}

void AppTracker::updateDisplayData(int hour, const std::string& bundleId, const std::string& appName,
                                   std::int64_t delta) {
    shownRows_.reset();
    todayHourlyByApp.change([&](std::vector<HourlyAppStats>& entries) {
        const auto entry = std::ranges::find_if(entries, [&](const auto& candidate) {
            return candidate.hour == hour && candidate.bundleId == bundleId;
        });
        if (entry == entries.end()) {
            entries.push_back({hour, bundleId, appName, delta});
        } else {
            entry->appName = appName;
            entry->count += delta;
        }
    });
    todayAppTotals.change([&](std::vector<AppStats>& totals) {
        auto total = std::ranges::find(totals, bundleId, &AppStats::bundleId);
        if (total == totals.end()) {
            total = totals.insert(total, {bundleId, appName, 0, false});
        }
        total->appName = appName;
        total->count += delta;
        moveUp(totals, total);
    });
}

QCoro::Task<> AppTracker::flushPending() {
    if (!store_ || pending_.isEmpty()) {
        co_return;
    }
    co_await write(shared_from_this(), store_, takePending());
}

CountBatch AppTracker::takePending() {
    ++flushes_;
    CountBatch taken = std::exchange(pending_, {});
    for (const AppRegistryRow& app : appRegistry.get()) { // a name that is known needs no write
        if (const auto name = taken.names.find(app.bundleId);
            name != taken.names.end() && name->second == app.appName) {
            taken.names.erase(name);
        }
    }
    return taken;
}

void AppTracker::giveBack(const CountBatch& counts) {
    pending_.add({.days = {}, .hours = {}, .applications = counts.applications, .names = counts.names});
}

// Asked of the store before the first wait, so that a program about to end loses nothing.
QCoro::Task<> AppTracker::write(std::shared_ptr<AppTracker> self, std::shared_ptr<DailyCountsStore> store,
                                CountBatch counts) {
    self->written_.add(counts);
    try {
        co_await store->write(counts, unixSeconds(self->clock_.now()));
        self->writesFail_ = false;
    } catch (const DailyCountsStoreError& error) {
        if (!std::exchange(self->writesFail_, true)) {
            for (const auto& [place, count] : counts.applications) {
                debugLog("[AppTracker] Failed to increment app count for " + std::get<2>(place) + ": " +
                         error.what());
            }
        }
        if (store == self->store_) { // else they are another account's, or went along with that store's
            self->written_.subtract(counts);
            self->giveBack(counts);
        }
        co_return;
    }
    if (!counts.names.empty()) {
        co_await self->loadRegistry();
    }
}

QCoro::Task<> AppTracker::load(std::shared_ptr<AppTracker> self) {
    co_await self->loadRegistry();
    co_await self->refreshFromDisk();
}

QCoro::Task<> AppTracker::loadRegistry() {
    const auto self = shared_from_this();
    const auto store = store_;
    if (!store) {
        co_return;
    }
    try {
        auto registry = co_await store->fetchAppRegistry();
        if (store == store_) { // else it is another account's
            appRegistry.set(std::move(registry));
        }
    } catch (const DailyCountsStoreError& error) {
        debugLog(std::string("[AppTracker] Failed to load registry: ") + error.what());
    }
}

// What the buffer holds of the old day stays the old day's.
void AppTracker::rolloverIfNeeded(Instant now) {
    DayKey today(now, calendar_);
    if (today == currentDay_) {
        return;
    }
    debugLog("[AppTracker] Day rollover detected: " + currentDay_.rawValue + " -> " + today.rawValue);
    currentDay_ = std::move(today);
    todayHourlyByApp.set({});
    todayAppTotals.set({});
    shownRows_.reset();
    // Asked for here, so that whoever reads the old day from now on finds its last presses there.
    const auto writing = std::make_shared<QCoro::Task<>>(flushPending());
    tasks_.start([writing] { return std::move(*writing); });
}

QCoro::Task<> AppTracker::refreshFromDisk() {
    const auto self = shared_from_this();
    rolloverIfNeeded(clock_.now());
    const auto store = store_;
    if (!store) {
        co_return;
    }
    try {
        const DayKey day = currentDay_;
        const std::int64_t flushes = flushes_;
        auto fetchingRows = store->fetchAppHourlyCounts(day);
        auto fetchingRegistry = store->fetchAppRegistry();
        TodayRows rows;
        rows.counts = co_await fetchingRows;
        rows.registry = co_await fetchingRegistry;
        // Else the rows are another account's or day's, or lack what a flush took from the buffer meanwhile.
        if (store == store_ && day == currentDay_ && flushes == flushes_) {
            publish(std::move(rows));
        }
        refreshFailureLog_.clear();
    } catch (const DailyCountsStoreError& error) {
        if (refreshFailureLog_.isDue(error.what(), 0, clock_.now())) {
            debugLog(std::string("[AppTracker] Failed to refresh from disk: ") + error.what());
        }
    }
}

void AppTracker::publish(TodayRows rows) {
    if (pending_.isEmpty() && rows == shownRows_) {
        return; // each second, most of the time
    }
    std::map<std::string, std::string> names = pending_.names;
    std::unordered_map<std::string, bool> hidden;
    for (const AppRegistryRow& app : rows.registry) {
        names.try_emplace(app.bundleId, app.appName);
        hidden.try_emplace(app.bundleId, app.isHidden);
    }
    std::map<int, std::map<std::string, std::int64_t>> counts;
    for (const AppHourlyCountRow& row : rows.counts) {
        if (row.hour >= 0 && row.hour < 24) {
            counts[row.hour][row.bundleId] += row.count;
        }
    }
    for (const auto& [place, count] : pending_.applications) {
        const auto& [day, hour, bundleId] = place;
        if (day == currentDay_) {
            counts[hour][bundleId] += count;
        }
    }

    std::vector<HourlyAppStats> hourly;
    std::vector<AppStats> totals;
    std::unordered_map<std::string, std::size_t> positions; // in `totals`
    for (const auto& [hour, apps] : counts) {
        for (const auto& [bundleId, count] : apps) {
            const auto known = names.find(bundleId);
            const std::string& name = known != names.end() ? known->second : bundleId;
            hourly.push_back({hour, bundleId, name, count});
            const auto [position, isNew] = positions.try_emplace(bundleId, totals.size());
            if (isNew) {
                totals.push_back({bundleId, name, 0, hidden[bundleId]});
            }
            totals[position->second].count += count;
        }
    }
    sortDescending(totals, todayAppTotals.get());

    if (!showsTheSame(sortedByHourAndApp(hourly), sortedByHourAndApp(todayHourlyByApp.get()))) {
        todayHourlyByApp.set(std::move(hourly));
    }
    if (!showsTheSame(totals, todayAppTotals.get())) {
        todayAppTotals.set(std::move(totals));
    }
    if (pending_.isEmpty()) {
        shownRows_ = std::move(rows);
    }
}

void AppTracker::updateStore(std::shared_ptr<DailyCountsStore> store) {
    store_ = std::move(store);
    pending_ = {};
    written_ = {};
    todayHourlyByApp.set({});
    todayAppTotals.set({});
    last30DaysAppDaily.set({});
    appRegistry.set({});
    shownRows_.reset();
    pastDays_ = {};
    currentDay_ = DayKey(clock_.now(), calendar_);
    debugLog("[AppTracker] Store updated, all caches cleared");
    tasks_.start([self = shared_from_this()] { return load(self); });
}

void AppTracker::continueWith(std::shared_ptr<DailyCountsStore> store) {
    store_ = std::move(store);
    shownRows_.reset();
    pastDays_ = {};
    for (const AppRegistryRow& app : appRegistry.get()) { // the other store may not know them
        pending_.names.try_emplace(app.bundleId, app.appName);
    }
    appRegistry.set({});
    tasks_.start([self = shared_from_this()] { return load(self); });
}

} // namespace fernhollow
