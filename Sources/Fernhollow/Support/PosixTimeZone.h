#pragma once

#include <unicode/timezone.h>

#include <memory>
#include <string_view>

namespace fernhollow {

/// The zone that a rule in POSIX's form describes, for example "CET-1CEST,M3.5.0,M10.5.0/3"; null when `rule`
/// is not such a rule. The zone has clock changes in the years 1990 to 2099.
std::unique_ptr<icu::TimeZone> makePosixTimeZone(std::string_view rule);

} // namespace fernhollow
