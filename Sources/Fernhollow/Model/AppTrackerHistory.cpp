// The history per application, its series for the charts and the colours.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AppHistory.h"
#include "Support/DebugLog.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <set>
#include <string>
#include <tuple>

namespace fernhollow {
namespace {

constexpr std::array<AppTracker::Color, 20> colorPalette{{
    {0.12, 0.47, 0.71}, {1.0, 0.5, 0.05},   {0.17, 0.63, 0.17}, {0.84, 0.15, 0.16}, {0.58, 0.4, 0.74},
    {0.55, 0.34, 0.29}, {0.89, 0.47, 0.76}, {0.5, 0.5, 0.5},    {0.74, 0.74, 0.13}, {0.09, 0.75, 0.81},
    {0.94, 0.2, 0.9},   {0.0, 0.5, 0.0},    {0.9, 0.3, 0.3},    {0.3, 0.3, 0.7},    {0.96, 0.65, 0.14},
    {0.0, 0.75, 0.65},  {0.7, 0.2, 0.5},    {0.4, 0.8, 0.4},    {0.95, 0.55, 0.55}, {0.35, 0.7, 0.9},
}};

std::string describe(const AppDailyCache& remote) {
    std::size_t entries = 0;
    std::set<std::string_view> apps;
    for (const auto& [day, counts] : remote) {
        entries += counts.size();
        for (const auto& [bundleId, app] : counts) {
            apps.insert(bundleId);
        }
    }
    return std::to_string(remote.size()) + " days, " + std::to_string(entries) + " app entries, " +
           std::to_string(apps.size()) + " unique apps";
}

/// The first and the last of its days; empty without any.
std::string describeRange(const AppDailyCache& remote) {
    if (remote.empty()) {
        return {};
    }
    const auto [first, last] = std::ranges::minmax_element(
        remote, {}, [](const auto& day) -> const std::string& { return day.first; });
    return first->first + " to " + last->first;
}

} // namespace

std::string AppTracker::DailyAppStats::id() const {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(day.time_since_epoch()).count();
    return std::to_string(seconds) + ".0-" + bundleId; // a day is a whole second
}

// djb2 over the characters, so that an application keeps its colour everywhere and for good.
AppTracker::Color AppTracker::color(std::string_view bundleId) {
    std::uint64_t hash = 5381;
    const auto length = static_cast<std::int32_t>(bundleId.size());
    for (std::int32_t position = 0; position < length;) {
        UChar32 character = 0;
        // NOLINTNEXTLINE(bugprone-assignment-in-if-condition,bugprone-inc-dec-in-conditions): the macro's
        U8_NEXT_OR_FFFD(bundleId.data(), position, length, character);
        hash = hash * 33 + static_cast<std::uint64_t>(character);
    }
    return colorPalette.at(hash % colorPalette.size());
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

/// False when only today's counts differ from what was logged minutes ago: they do with every press.
bool AppTracker::logReceived(const AppDailyCache& remote, const DayKey& todayKey, Instant now) {
    const std::string received = describe(remote);
    const std::string range = describeRange(remote);
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
        names.clear(); // the identifiers stand for them
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

// Presses go to today's rows and, when a day ends, to that day's: those of the past are read once a day.
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
            read.store.reset(); // the day is left out for now and read again next time
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
    auto entries = todayHourlyByApp.get();
    std::ranges::sort(entries, {},
                      [](const HourlyAppStats& entry) { return std::tie(entry.hour, entry.bundleId); });
    return entries;
}

} // namespace fernhollow
