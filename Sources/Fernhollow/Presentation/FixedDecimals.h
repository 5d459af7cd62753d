#pragma once

#include <array>
#include <charconv>
#include <string>

namespace fernhollow {

/// A number with `decimals` digits after a point, whatever the locale. Halves are rounded to the even
/// digit, as by C's "%.1f".
inline std::string fixedDecimals(double number, int decimals) {
    std::array<char, 400> text; // the largest double has 309 digits
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, decimals);
    return {text.data(), end.ptr};
}

} // namespace fernhollow
