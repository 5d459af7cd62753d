#include "Model/AppTracker.h"

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AppHistory.h"
#include "Model/TodayByApp.h"
#include "Support/ApplicationIdentity.h"
#include "Support/DebugLog.h"
#include "Support/TaskScope.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <tuple>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// A program that is killed loses the presses in the buffer. The refresh of each second empties it too, but
// comes late on a busy machine.
constexpr auto bufferedAtMost = 500ms;

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
    todayHourlyByApp.change([&](auto& hours) { TodayByApp::add(hours, hour, bundleId, appName, delta); });
    todayAppTotals.change([&](auto& totals) { TodayByApp::add(totals, bundleId, appName, delta); });
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

// The store is asked before the first wait, so that a program that is ending loses nothing.
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
        if (store == self->store_) { // otherwise they belong to another account, or moved to the next store
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
        if (store == store_) { // otherwise it belongs to another account
            appRegistry.set(std::move(registry));
        }
    } catch (const DailyCountsStoreError& error) {
        debugLog(std::string("[AppTracker] Failed to load registry: ") + error.what());
    }
}

// Presses of the old day that are in the buffer keep their day.
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
    // Written here, so that a later read of the old day finds its last presses.
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
        // Otherwise the rows belong to another account or day, or lack presses that a flush took from the
        // buffer meanwhile.
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
        return; // this is so in most seconds
    }
    auto [hours, totals] =
        TodayByApp::lists(rows.counts, rows.registry, pending_, currentDay_, todayAppTotals.get());
    if (!TodayByApp::showsTheSame(hours, todayHourlyByApp.get())) {
        todayHourlyByApp.set(std::move(hours));
    }
    if (!TodayByApp::showsTheSame(totals, todayAppTotals.get())) {
        todayAppTotals.set(std::move(totals));
    }
    if (pending_.isEmpty()) {
        shownRows_ = std::move(rows);
    }
}

std::string AppTracker::DailyAppStats::id() const {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(day.time_since_epoch()).count();
    return std::to_string(seconds) + ".0-" + bundleId; // 12:00 is a whole second
}

QCoro::Task<> AppTracker::updateLast30DaysAppDaily(std::shared_ptr<const AppDailyCache> remote) {
    const auto self = shared_from_this();
    const auto store = store_;
    const Instant now = clock_.now();
    const DayKey todayKey(now, calendar_);
    const bool isLogged = logReceived(*remote, todayKey, now);
    AppDailyCache local;
    if (store) {
        local = co_await buildLocalDailyAppTotals(store, now);
        if (store != store_) {
            co_return; // it is another account's
        }
    }
    const Calendar calendar = calendar_.snapshot();
    auto records = AppHistory::pastDays(AppHistory::merged(*remote, local, calendar, now),
                                        minValidDate(clock_), calendar, now, isLogged);
    const auto& totals = todayAppTotals.get();
    if (!totals.empty()) {
        const Instant noon = AppHistory::normalizedDayDate(todayKey.rawValue, calendar).value_or(now);
        std::int64_t total = 0;
        for (const AppStats& app : totals) {
            records.push_back({noon, app.bundleId, app.appName, app.count});
            total += app.count;
        }
        if (isLogged) {
            debugLog("[AppTracker] Adding today's data: " + std::to_string(totals.size()) +
                     " apps, total: " + std::to_string(total));
        }
    }
    if (AppHistory::showsTheSame(records, last30DaysAppDaily.get(), calendar)) {
        co_return;
    }
    if (isLogged) {
        debugLog("[AppTracker] Updating last30DaysAppDaily: " + std::to_string(records.size()) + " entries");
    }
    last30DaysAppDaily.set(std::move(records));
}

/// Logs what was received. False when it did not, because only today's counts, which change with every
/// press, differ from what was logged less than ten minutes ago.
bool AppTracker::logReceived(const AppDailyCache& remote, const DayKey& todayKey, Instant now) {
    const std::string received = AppHistory::describe(remote);
    const std::string range = AppHistory::describeRange(remote);
    const std::string today = "todayKey=" + todayKey.rawValue +
                              ", todayAppTotals count=" + std::to_string(todayAppTotals.get().size());
    std::int64_t presses = 0;
    for (const AppStats& app : todayAppTotals.get()) {
        presses += app.count;
    }
    if (!historyLog_.isDue(received + range + today, presses, now)) {
        return false;
    }
    debugLog("[AppTracker] updateLast30DaysAppDaily received: " + received);
    if (!remote.empty()) {
        debugLog("[AppTracker] Remote data date range: " + range);
    }
    debugLog("[AppTracker] updateLast30DaysAppDaily: " + today);
    return true;
}

QCoro::Task<AppDailyCache> AppTracker::buildLocalDailyAppTotals(std::shared_ptr<DailyCountsStore> store,
                                                                Instant now) {
    const auto self = shared_from_this();
    auto fetchingRegistry = store->fetchAppRegistry();
    co_await readPastDays(store, now);
    AppDailyCache totals;
    if (store != store_) {
        co_return totals;
    }
    std::unordered_map<std::string, std::string> names;
    try {
        for (auto& app : co_await fetchingRegistry) {
            names.try_emplace(std::move(app.bundleId), std::move(app.appName));
        }
    } catch (const DailyCountsStoreError&) {
        names.clear(); // the identifiers are shown instead
    }
    for (const auto& [day, counts] : pastDays_.counts) {
        RemoteAppCounts& apps = totals[day];
        for (const auto& [bundleId, count] : counts) {
            const auto known = names.find(bundleId);
            apps.emplace(bundleId, RemoteAppCount{known != names.end() ? known->second : bundleId, count});
        }
    }
    co_return totals;
}

// New presses change only today's rows and, when a day ends, that day's. So the past days are read once a
// day.
QCoro::Task<> AppTracker::readPastDays(std::shared_ptr<DailyCountsStore> store, Instant now) {
    const auto& days = recentDays_.upTo(now, calendar_);
    if (pastDays_.store.lock() == store && pastDays_.lastNoon == days.back().noon) {
        co_return;
    }
    PastDays read{store, days.back().noon, {}};
    std::vector<std::pair<std::string, Future<CountsByApp>>> reading;
    for (const RecentDays::Day& day : days) {
        if (day.noon != read.lastNoon) {
            reading.emplace_back(day.key.rawValue, store->fetchAppDailyCounts(day.key));
        }
    }
    for (auto& [day, counts] : reading) {
        try {
            if (auto apps = co_await counts; !apps.empty()) {
                read.counts.emplace(day, std::move(apps));
            }
        } catch (const DailyCountsStoreError&) {
            read.store.reset(); // the day is left out now; the next call reads it again
        }
    }
    if (store == store_) {
        pastDays_ = std::move(read);
    }
}

std::vector<AppTracker::DailyAppStats> AppTracker::getFilteredDailyData() const {
    const auto& records = last30DaysAppDaily.get();
    std::vector<std::size_t> order(records.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::sort(order, {}, [&](std::size_t i) { return std::pair(records[i].day, i); });
    std::vector<DailyAppStats> sorted;
    sorted.reserve(records.size());
    std::ranges::transform(order, std::back_inserter(sorted), [&](std::size_t i) { return records[i]; });
    return sorted;
}

std::vector<AppTracker::HourlyAppStats> AppTracker::getFilteredHourlyData() const {
    return TodayByApp::sorted(todayHourlyByApp.get());
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
    for (const AppRegistryRow& app : appRegistry.get()) { // the new store may not know them
        pending_.names.try_emplace(app.bundleId, app.appName);
    }
    appRegistry.set({});
    tasks_.start([self = shared_from_this()] { return load(self); });
}

} // namespace fernhollow
