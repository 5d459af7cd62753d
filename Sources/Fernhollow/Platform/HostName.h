#pragma once

#include <string>

namespace fernhollow {

/// The computer's name as its user chose it (PRETTY_HOSTNAME of machine-info(5)), else its network
/// name. Any thread may call it.
std::string hostDisplayName();

} // namespace fernhollow
