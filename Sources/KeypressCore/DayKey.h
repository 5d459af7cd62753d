#pragma once

#include "Support/Clock.h"

#include <nlohmann/json_fwd.hpp>

#include <compare>
#include <functional>
#include <optional>
#include <string>

namespace fernhollow {

class Calendar;

/// One calendar day in the user's zone, as the text "2026-01-05".
///
/// It is ordered and hashed as text, which for keys made from dates is the order of the days. It is
/// the key of every daily and hourly record, here and on the wire. As JSON it is {"rawValue":
/// "2026-01-05"}.
class DayKey {
public:
    DayKey() = default;

    /// Wraps any text, unchecked.
    explicit DayKey(std::string text) : rawValue(std::move(text)) {}

    /// The day on which `instant` falls in `calendar`.
    DayKey(Instant instant, const Calendar& calendar);

    /// The day that `clock` shows now in the system's present time zone.
    static DayKey today(const Clock& clock);

    /// 12:00:00 of the day in `calendar`; empty when the text is not three whole numbers.
    /// Numbers that are not a day, such as a month 13, are carried over by the calendar.
    std::optional<Instant> date(const Calendar& calendar) const;

    std::strong_ordering operator<=>(const DayKey&) const = default;

    std::string rawValue;
};

void to_json(nlohmann::json& json, const DayKey& day);
void from_json(const nlohmann::json& json, DayKey& day);

} // namespace fernhollow

template<>
struct std::hash<fernhollow::DayKey> {
    std::size_t operator()(const fernhollow::DayKey& day) const noexcept {
        return std::hash<std::string>{}(day.rawValue);
    }
};
