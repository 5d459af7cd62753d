#include "Model/TodayByApp.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace fernhollow::TodayByApp {
namespace {

using AppStats = AppTracker::AppStats;
using HourlyAppStats = AppTracker::HourlyAppStats;

/// Moves the entry whose count has just grown up past the smaller ones; the others keep their order.
void moveUp(Totals& totals, Totals::iterator grown) {
    const auto place = std::ranges::upper_bound(totals.begin(), grown, grown->count, std::ranges::greater(),
                                                &AppStats::count);
    std::rotate(place, grown, grown + 1);
}

/// Sorts by descending count; applications with equal counts keep the order of `shown`.
void sortDescending(Totals& totals, const Totals& shown) {
    std::unordered_map<std::string, std::size_t> positions;
    for (const auto* list : {&shown, static_cast<const Totals*>(&totals)}) {
        for (const AppStats& app : *list) {
            positions.try_emplace(app.bundleId, positions.size());
        }
    }
    std::ranges::sort(totals, {},
                      [&](const AppStats& app) { return std::pair(-app.count, positions.at(app.bundleId)); });
}

using Counts = std::map<int, std::map<std::string, std::int64_t>>; ///< by hour and application

Counts counts(const std::vector<AppHourlyCountRow>& rows, const CountBatch& pending, const DayKey& day) {
    Counts counts;
    for (const AppHourlyCountRow& row : rows) {
        if (row.hour >= 0 && row.hour < 24) {
            counts[row.hour][row.bundleId] += row.count;
        }
    }
    for (const auto& [place, count] : pending.applications) {
        const auto& [pressed, hour, bundleId] = place;
        if (pressed == day) {
            counts[hour][bundleId] += count;
        }
    }
    return counts;
}

} // namespace

void add(Hours& hours, int hour, const std::string& bundleId, const std::string& appName,
         std::int64_t delta) {
    auto entry = std::ranges::find_if(hours, [&](const HourlyAppStats& candidate) {
        return candidate.hour == hour && candidate.bundleId == bundleId;
    });
    if (entry == hours.end()) {
        entry = hours.insert(entry, {hour, bundleId, appName, 0});
    }
    entry->appName = appName;
    entry->count += delta;
}

void add(Totals& totals, const std::string& bundleId, const std::string& appName, std::int64_t delta) {
    auto total = std::ranges::find(totals, bundleId, &AppStats::bundleId);
    if (total == totals.end()) {
        total = totals.insert(total, {bundleId, appName, 0, false});
    }
    total->appName = appName;
    total->count += delta;
    moveUp(totals, total);
}

Lists lists(const std::vector<AppHourlyCountRow>& rows, const std::vector<AppRegistryRow>& registry,
            const CountBatch& pending, const DayKey& day, const Totals& shown) {
    std::map<std::string, std::string> names = pending.names;
    std::unordered_map<std::string, bool> hidden;
    for (const AppRegistryRow& app : registry) {
        names.try_emplace(app.bundleId, app.appName);
        hidden.try_emplace(app.bundleId, app.isHidden);
    }
    Lists lists;
    std::unordered_map<std::string, std::size_t> positions; // in `lists.totals`
    for (const auto& [hour, apps] : counts(rows, pending, day)) {
        for (const auto& [bundleId, count] : apps) {
            const auto known = names.find(bundleId);
            const std::string& name = known != names.end() ? known->second : bundleId;
            lists.hours.push_back({hour, bundleId, name, count});
            const auto [position, isNew] = positions.try_emplace(bundleId, lists.totals.size());
            if (isNew) {
                lists.totals.push_back({bundleId, name, 0, hidden[bundleId]});
            }
            lists.totals[position->second].count += count;
        }
    }
    sortDescending(lists.totals, shown);
    return lists;
}

bool showsTheSame(const Hours& a, const Hours& b) {
    return std::ranges::equal(sorted(a), sorted(b), [](const HourlyAppStats& x, const HourlyAppStats& y) {
        return std::tie(x.hour, x.bundleId, x.count) == std::tie(y.hour, y.bundleId, y.count);
    });
}

bool showsTheSame(const Totals& a, const Totals& b) {
    return std::ranges::equal(a, b, [](const AppStats& x, const AppStats& y) {
        return std::tie(x.bundleId, x.count) == std::tie(y.bundleId, y.count);
    });
}

Hours sorted(Hours hours) {
    std::ranges::sort(hours, {},
                      [](const HourlyAppStats& entry) { return std::tie(entry.hour, entry.bundleId); });
    return hours;
}

} // namespace fernhollow::TodayByApp
