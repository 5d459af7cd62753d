// The session that the settings keep: one that is decoded survives being written and decoded again.

#include "Fuzz.h"
#include "Model/AccountManager.h"

#include <nlohmann/json.hpp>

#include <optional>

namespace fernhollow::fuzz {
namespace {

using nlohmann::json;

std::optional<AccountManager::Session> decoded(std::string_view text) {
    try {
        return json::parse(text).get<AccountManager::Session>();
    } catch (const json::exception&) {
        return std::nullopt;
    }
}

} // namespace

void check(std::string_view input) {
    if (const auto session = decoded(input)) {
        require(isUtf8(session->email), "the address is UTF-8");
        require(decoded(json(*session).dump()) == session, "what is written is decoded to the same session");
    }
}

} // namespace fernhollow::fuzz
