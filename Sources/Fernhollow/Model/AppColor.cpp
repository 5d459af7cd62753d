// The colours of applications.

#include "Model/AppTracker.h"

#include <unicode/utf8.h>

#include <array>
#include <cstdint>

namespace fernhollow {
namespace {

constexpr std::array<AppTracker::Color, 20> colorPalette{{
    {0.12, 0.47, 0.71}, {1.0, 0.5, 0.05},   {0.17, 0.63, 0.17}, {0.84, 0.15, 0.16}, {0.58, 0.4, 0.74},
    {0.55, 0.34, 0.29}, {0.89, 0.47, 0.76}, {0.5, 0.5, 0.5},    {0.74, 0.74, 0.13}, {0.09, 0.75, 0.81},
    {0.94, 0.2, 0.9},   {0.0, 0.5, 0.0},    {0.9, 0.3, 0.3},    {0.3, 0.3, 0.7},    {0.96, 0.65, 0.14},
    {0.0, 0.75, 0.65},  {0.7, 0.2, 0.5},    {0.4, 0.8, 0.4},    {0.95, 0.55, 0.55}, {0.35, 0.7, 0.9},
}};

} // namespace

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

} // namespace fernhollow
