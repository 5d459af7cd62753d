#pragma once

#include "Support/UserLocale.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace fernhollow {

/// Whole numbers in a locale's digits and grouping, for example "12,345". One thread only.
class NumberText {
public:
    explicit NumberText(std::string_view locale = userLocale("LC_NUMERIC"));
    ~NumberText();

    std::string operator()(std::int64_t number) const;

private:
    struct Formatter;
    std::unique_ptr<Formatter> formatter_;
};

} // namespace fernhollow
