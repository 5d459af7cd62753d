#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace fernhollow {

/// The user's locale for numbers and dates as an identifier that ICU reads, from LC_ALL, LC_NUMERIC
/// and LANG in POSIX order. "C" and "POSIX", which group no digits, stand for "en".
std::string userNumberLocale();

/// Whole numbers in a locale's digits and grouping, for example "12,345". One thread only.
class NumberText {
public:
    explicit NumberText(std::string_view locale = userNumberLocale());
    ~NumberText();

    std::string operator()(std::int64_t number) const;

    /// The same shortened to a thousand's unit, for example "12K", as the locale writes it.
    std::string compact(std::int64_t number) const;

private:
    struct Formatters;
    std::unique_ptr<Formatters> formatters_;
};

} // namespace fernhollow
