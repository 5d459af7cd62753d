#pragma once

#include "Model/AppTracker.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace fernhollow {

class TextSearch;

/// One row of a list of applications. Its texts belong to the list that it was made from, so that a
/// list can be made at each press without copying them.
struct AppDisplayItem {
    std::string_view bundleId;
    std::string_view appName;
    std::int64_t count = 0;
    std::optional<double> percentage = {}; ///< of the day's presses, in lists that show it

    bool operator==(const AppDisplayItem&) const = default;
};

/// Functions of values that make the lists of a day's applications.
namespace AppList {

std::vector<AppDisplayItem> ofToday(const std::vector<AppTracker::AppStats>& totals);

/// The rows of `history` for the day of `date`.
std::vector<AppDisplayItem> ofDay(const std::vector<AppTracker::DailyAppStats>& history, Instant date,
                                  const Calendar& calendar);

/// Removes the items whose names do not contain the searched text. Sorts the others by descending count;
/// items with equal counts keep their order.
void arrange(std::vector<AppDisplayItem>& items, const TextSearch& search);

/// Gives each item its share of `total` in percent; 0 when `total` is 0.
void setPercentages(std::vector<AppDisplayItem>& items, std::int64_t total);

} // namespace AppList

/// The figures of one day. Hours are known for today only.
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
