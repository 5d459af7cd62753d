#include "KeypressCore/DayKey.h"

#include "KeypressCore/Calendar.h"

#include <nlohmann/json.hpp>

#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>

namespace fernhollow {
namespace {

/// The number that `text` is; empty unless all of it is one signed decimal integer.
std::optional<int> number(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return std::nullopt;
        }
    }
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

} // namespace

DayKey::DayKey(Instant instant, const Calendar& calendar) {
    const auto day = calendar.components(instant);
    std::array<char, 40> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", day.year, day.month, day.day);
    rawValue.assign(text.data(), static_cast<std::size_t>(length));
}

DayKey DayKey::today(const Clock& clock) {
    return {clock.now(), Calendar::autoupdatingCurrent()};
}

std::optional<Instant> DayKey::date(const Calendar& calendar) const {
    std::array<int, 3> numbers{};
    std::size_t count = 0;
    for (std::string_view rest = rawValue; !rest.empty();) {
        const std::string_view piece = rest.substr(0, rest.find('-'));
        rest.remove_prefix(std::min(rest.size(), piece.size() + 1));
        if (piece.empty()) {
            continue;
        }
        const auto value = number(piece);
        if (!value || count == numbers.size()) {
            return std::nullopt;
        }
        numbers[count++] = *value;
    }
    if (count != numbers.size()) {
        return std::nullopt;
    }
    return calendar.date({.year = numbers[0], .month = numbers[1], .day = numbers[2], .hour = 12});
}

void to_json(nlohmann::json& json, const DayKey& day) {
    json = {{"rawValue", day.rawValue}};
}

void from_json(const nlohmann::json& json, DayKey& day) {
    json.at("rawValue").get_to(day.rawValue);
}

} // namespace fernhollow
