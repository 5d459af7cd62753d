#pragma once

#include "KeypressCore/DayKey.h"
#include "KeypressCore/Records.h"

#include <string>

namespace fernhollow {

/// A row that the backend took, of any table: the day's count has no hour, an hour's count no application,
/// and an application's name no day.
struct TakenRow {
    static constexpr int noHour = -1;

    DayKey day{};
    int hour = noHour;
    std::string app{};
    std::string value{}; ///< what is compared: a count, or a name

    static TakenRow of(const DailyCountRow& row) {
        return {.day = row.day, .value = std::to_string(row.count)};
    }
    static TakenRow of(const HourlyCountRow& row) {
        return {.day = row.day, .hour = row.hour, .value = std::to_string(row.count)};
    }
    static TakenRow of(const AppHourlyCountRow& row) {
        return {row.day, row.hour, row.bundleId, std::to_string(row.count)};
    }
    static TakenRow of(const AppRegistryRow& row) {
        return {.app = row.bundleId, .value = (row.isHidden ? "-" : "+") + row.appName};
    }
};

} // namespace fernhollow
