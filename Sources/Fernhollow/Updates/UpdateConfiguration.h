#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace fernhollow {

class BundleInfo;

/// Where updates come from and how often to look for them, as the information dictionary says.
struct UpdateConfiguration {
    std::string feedUrl;                                      ///< HTTPS, or plain HTTP on this machine
    std::string publicKey;                                    ///< Ed25519, base64
    std::chrono::seconds checkInterval{std::chrono::days{1}}; ///< at least an hour
};

/// The configuration in `info`. Absent, with a line in the debug log that says why, when there is no feed or
/// a value cannot be used; the program then does not check.
std::optional<UpdateConfiguration> readUpdateConfiguration(const BundleInfo& info);

/// The configuration of the running program.
std::optional<UpdateConfiguration> readUpdateConfiguration();

} // namespace fernhollow
