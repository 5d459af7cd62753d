#pragma once

#include "Support/Clock.h"

#include <optional>
#include <string>
#include <string_view>

namespace fernhollow {

/// The instant in UTC to the second, as "2026-03-05T14:07:09Z" (ISO 8601, RFC 3339).
std::string internetTime(Instant instant);

/// The instant of such a text, whose zone may also be an offset such as "-03:00"; empty when it is
/// anything else: fractions of seconds, no zone, a date that does not exist or that no Instant holds.
std::optional<Instant> parseInternetTime(std::string_view text);

} // namespace fernhollow
