#pragma once

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>

namespace fernhollow {

/// The address of the hosted backend and the public key for its interface.
struct SupabaseConfig {
    std::string url;     ///< scheme and host, without a path
    std::string anonKey; ///< a JSON Web Token (RFC 7519) with the role "anon"

    bool operator==(const SupabaseConfig&) const = default;

    /// The values compiled in; nothing when the program was built without a backend.
    static std::optional<SupabaseConfig> compiledIn();
};

void to_json(nlohmann::json& json, const SupabaseConfig& config);
void from_json(const nlohmann::json& json, SupabaseConfig& config);

} // namespace fernhollow
