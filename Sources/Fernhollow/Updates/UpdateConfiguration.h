#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace fernhollow {

class BundleInfo;

/// Where updates come from, from the information dictionary beside the program.
struct UpdateConfiguration {
    std::string feedUrl;                                      ///< HTTPS, or plain HTTP on this machine
    std::string publicKey;                                    ///< Ed25519, base64
    std::chrono::seconds checkInterval{std::chrono::days{1}}; ///< at least an hour
};

/// Absent, with a line in the debug log that says why, when there is no feed or what is there cannot be used:
/// checks are off then.
std::optional<UpdateConfiguration> readUpdateConfiguration(const BundleInfo& info);

/// That of the running program.
std::optional<UpdateConfiguration> readUpdateConfiguration();

} // namespace fernhollow
