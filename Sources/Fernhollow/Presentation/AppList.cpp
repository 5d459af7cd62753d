#include "Presentation/AppList.h"

#include "Presentation/DayColumns.h"
#include "Presentation/TextSearch.h"

#include <algorithm>
#include <functional>
#include <map>

namespace fernhollow {
namespace AppList {

std::vector<AppDisplayItem> ofToday(const std::vector<AppTracker::AppStats>& totals) {
    std::vector<AppDisplayItem> items;
    items.reserve(totals.size());
    for (const auto& app : totals) {
        items.push_back({app.bundleId, app.appName, app.count});
    }
    return items;
}

std::vector<AppDisplayItem> ofDay(const std::vector<AppTracker::DailyAppStats>& history, Instant date,
                                  const Calendar& calendar) {
    const DayColumns day(1, date, calendar);
    std::vector<AppDisplayItem> items;
    for (const auto& record : history) {
        if (day.column(record.day)) {
            items.push_back({record.bundleId, record.appName, record.count});
        }
    }
    return items;
}

void arrange(std::vector<AppDisplayItem>& items, const TextSearch& search) {
    std::erase_if(items, [&](const AppDisplayItem& item) { return !search.isIn(item.appName); });
    for (auto item = items.begin(); item != items.end(); ++item) { // few, and mostly in order already
        const auto place = std::ranges::upper_bound(items.begin(), item, item->count, std::greater(),
                                                    &AppDisplayItem::count);
        std::rotate(place, item, item + 1);
    }
}

void setPercentages(std::vector<AppDisplayItem>& items, std::int64_t total) {
    for (AppDisplayItem& item : items) {
        item.percentage = total < 1 ? 0 : static_cast<double>(item.count) / static_cast<double>(total) * 100;
    }
}

} // namespace AppList

DayFigures DayFigures::of(const std::vector<AppDisplayItem>& apps,
                          const std::vector<AppTracker::HourlyAppStats>& hourly) {
    DayFigures figures;
    for (const auto& app : apps) {
        figures.dayTotal += app.count;
    }
    std::map<int, std::int64_t> hours;
    for (const auto& entry : hourly) {
        hours[entry.hour] += entry.count;
    }
    figures.activeHours = static_cast<int>(hours.size());
    if (!hours.empty()) {
        figures.peakHour =
            std::ranges::max_element(hours, {}, [](const auto& hour) { return hour.second; })->first;
    }
    return figures;
}

double DayFigures::averagePerHour() const {
    return activeHours < 1 ? 0 : static_cast<double>(dayTotal) / activeHours;
}

} // namespace fernhollow
