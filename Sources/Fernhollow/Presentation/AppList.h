#pragma once

#include "Model/AppTracker.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace fernhollow {

class TextSearch;

/// One row of a list of applications. Its texts are those of the list that it was made from, so that a
/// list can be made with each press without a copy of them.
struct AppDisplayItem {
    std::string_view bundleId;
    std::string_view appName;
    std::int64_t count = 0;
    std::optional<double> percentage = {}; ///< of the day's presses, in lists that show it

    bool operator==(const AppDisplayItem&) const = default;
};

/// What the views list of a day, as functions of values.
namespace AppList {

std::vector<AppDisplayItem> ofToday(const std::vector<AppTracker::AppStats>& totals);

/// The records of `history` on the day of `date`.
std::vector<AppDisplayItem> ofDay(const std::vector<AppTracker::DailyAppStats>& history, Instant date,
                                  const Calendar& calendar);

/// In descending count, those with equal counts as they are; only those whose names hold the searched text.
void arrange(std::vector<AppDisplayItem>& items, const TextSearch& search);

/// Gives each item its share of `total`, 0 when there is none.
void setPercentages(std::vector<AppDisplayItem>& items, std::int64_t total);

} // namespace AppList

/// What one day comes to. Hours are known of today only.
struct DayFigures {
    std::int64_t dayTotal = 0;
    int activeHours = 0;
    std::optional<int> peakHour; ///< the first of the hours with the highest count

    double averagePerHour() const;

    static DayFigures of(const std::vector<AppDisplayItem>& apps,
                         const std::vector<AppTracker::HourlyAppStats>& hourly);

    bool operator==(const DayFigures&) const = default;
};

} // namespace fernhollow
