#pragma once

#include "KeypressCore/DayKey.h"

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <utility>

namespace fernhollow {

/// Counts that are written to the store together: by day, by hour, and by hour and application.
///
/// The three do not have to agree with each other: an hour may have been written before its day.
struct CountBatch {
    using Hour = std::pair<DayKey, int>;
    using ApplicationHour = std::tuple<DayKey, int, std::string>; ///< with the application's identifier

    std::map<DayKey, std::int64_t> days;
    std::map<Hour, std::int64_t> hours;
    std::map<ApplicationHour, std::int64_t> applications;
    std::map<std::string, std::string> names; ///< of applications to register, by identifier

    /// True when there are no counts; names alone are not worth a write.
    bool isEmpty() const { return days.empty() && hours.empty() && applications.empty(); }

    /// Adds the other counts. Where both name an application, this batch's name stays.
    void add(const CountBatch& other) {
        for (const auto& [day, count] : other.days) {
            days[day] += count;
        }
        for (const auto& [hour, count] : other.hours) {
            hours[hour] += count;
        }
        for (const auto& [hour, count] : other.applications) {
            applications[hour] += count;
        }
        names.insert(other.names.begin(), other.names.end());
    }

    /// Subtracts the other counts and removes those that reach zero; counts that are missing here stay
    /// missing.
    void subtract(const CountBatch& other) {
        subtract(days, other.days);
        subtract(hours, other.hours);
        subtract(applications, other.applications);
    }

private:
    template<class Counts>
    static void subtract(Counts& counts, const Counts& others) {
        for (const auto& [place, other] : others) {
            const auto found = counts.find(place);
            if (found == counts.end()) {
                continue;
            }
            found->second -= other;
            if (found->second <= 0) {
                counts.erase(found);
            }
        }
    }
};

} // namespace fernhollow
