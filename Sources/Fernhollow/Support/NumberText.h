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

private:
    struct Formatter;
    std::unique_ptr<Formatter> formatter_;
};

} // namespace fernhollow
