#include "Support/SupabaseConfig.h"

#include <nlohmann/json.hpp>

#include <string_view>

namespace fernhollow {

std::optional<SupabaseConfig> SupabaseConfig::compiledIn() {
    constexpr std::string_view url = FERNHOLLOW_SUPABASE_URL;
    if (url.empty()) {
        return std::nullopt;
    }
    return SupabaseConfig{std::string(url), FERNHOLLOW_SUPABASE_ANON_KEY};
}

void to_json(nlohmann::json& json, const SupabaseConfig& config) {
    json = {{"url", config.url}, {"anonKey", config.anonKey}};
}

void from_json(const nlohmann::json& json, SupabaseConfig& config) {
    json.at("url").get_to(config.url);
    json.at("anonKey").get_to(config.anonKey);
}

} // namespace fernhollow
