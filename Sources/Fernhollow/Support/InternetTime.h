#pragma once

#include "Support/Clock.h"

#include <string>

namespace fernhollow {

/// The instant in UTC to the second, as "2026-03-05T14:07:09Z" (ISO 8601, RFC 3339).
std::string internetTime(Instant instant);

} // namespace fernhollow
