#pragma once

#include "KeypressCore/DayKey.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace fernhollow {

/// Key presses on one day.
struct DailyCountRow {
    DayKey day;
    std::int64_t count = 0;

    std::string id() const { return day.rawValue; }
    bool operator==(const DailyCountRow&) const = default;
};

/// Key presses in one hour of a day.
struct HourlyCountRow {
    DayKey day;
    int hour = 0; ///< 0 to 23
    std::int64_t count = 0;

    std::string id() const { return day.rawValue + "-" + std::to_string(hour); }
    bool operator==(const HourlyCountRow&) const = default;
};

/// Key presses in one hour of a day while one application was in front.
struct AppHourlyCountRow {
    DayKey day;
    int hour = 0; ///< 0 to 23
    std::string bundleId;
    std::int64_t count = 0;

    std::string id() const { return day.rawValue + "-" + std::to_string(hour) + "-" + bundleId; }
    bool operator==(const AppHourlyCountRow&) const = default;
};

/// An application that has been in front.
struct AppRegistryRow {
    std::string bundleId;
    std::string appName;        ///< the name last seen
    std::int64_t firstSeen = 0; ///< seconds since the Unix epoch
    bool isHidden = false;      ///< true when the lists of applications leave it out

    const std::string& id() const { return bundleId; }
    bool operator==(const AppRegistryRow&) const = default;
};

/// A hash over any number of fields, for the records' specialisations below.
template<class... Fields>
std::size_t hashOf(const Fields&... fields) noexcept {
    std::size_t seed = 0;
    ((seed ^= std::hash<Fields>{}(fields) + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2)), ...);
    return seed;
}

} // namespace fernhollow

template<>
struct std::hash<fernhollow::DailyCountRow> {
    std::size_t operator()(const fernhollow::DailyCountRow& row) const noexcept {
        return fernhollow::hashOf(row.day, row.count);
    }
};

template<>
struct std::hash<fernhollow::HourlyCountRow> {
    std::size_t operator()(const fernhollow::HourlyCountRow& row) const noexcept {
        return fernhollow::hashOf(row.day, row.hour, row.count);
    }
};

template<>
struct std::hash<fernhollow::AppHourlyCountRow> {
    std::size_t operator()(const fernhollow::AppHourlyCountRow& row) const noexcept {
        return fernhollow::hashOf(row.day, row.hour, row.bundleId, row.count);
    }
};

template<>
struct std::hash<fernhollow::AppRegistryRow> {
    std::size_t operator()(const fernhollow::AppRegistryRow& row) const noexcept {
        return fernhollow::hashOf(row.bundleId, row.appName, row.firstSeen, row.isHidden);
    }
};
