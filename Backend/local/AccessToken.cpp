#include "local/AccessToken.h"

#include "local/ApiError.h"

#include <nlohmann/json.hpp>

#include <array>
#include <optional>
#include <sodium.h>

namespace fernhollow::backend {

namespace {

using Signature = std::array<unsigned char, crypto_auth_hmacsha256_BYTES>;

const unsigned char* bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::optional<std::string> fromBase64Url(std::string_view text) {
    std::string decoded(text.size(), '\0');
    std::size_t size = 0;
    if (sodium_base642bin(reinterpret_cast<unsigned char*>(decoded.data()), decoded.size(), text.data(),
                          text.size(), nullptr, &size, nullptr,
                          sodium_base64_VARIANT_URLSAFE_NO_PADDING) != 0) {
        return std::nullopt;
    }
    decoded.resize(size);
    return decoded;
}

Signature sign(std::string_view text, std::string_view secret) {
    crypto_auth_hmacsha256_state state;
    Signature signature;
    crypto_auth_hmacsha256_init(&state, bytes(secret), secret.size());
    crypto_auth_hmacsha256_update(&state, bytes(text), text.size());
    crypto_auth_hmacsha256_final(&state, signature.data());
    return signature;
}

nlohmann::json objectIn(std::string_view segment) {
    const auto text = fromBase64Url(segment);
    auto object = text ? nlohmann::json::parse(*text, nullptr, false) : nlohmann::json();
    if (!object.is_object()) {
        throw ApiError::badToken("JWT cannot be decoded");
    }
    return object;
}

/// A claim that is a time; absent when the token has none.
std::optional<double> timeOf(const nlohmann::json& claims, const char* name) {
    const auto claim = claims.find(name);
    if (claim == claims.end() || claim->is_null()) {
        return std::nullopt;
    }
    if (!claim->is_number()) {
        throw ApiError::badToken("JWT claims cannot be read");
    }
    return claim->get<double>();
}

void checkTimes(const nlohmann::json& claims, std::chrono::system_clock::time_point now) {
    constexpr double tolerated = 30;
    const double seconds = std::chrono::duration<double>(now.time_since_epoch()).count();
    if (const auto end = timeOf(claims, "exp"); end && *end + tolerated < seconds) {
        throw ApiError::badToken("JWT expired");
    }
    if (const auto start = timeOf(claims, "nbf"); start && *start - tolerated > seconds) {
        throw ApiError::badToken("JWT not yet valid");
    }
}

} // namespace

Identity verifyToken(std::string_view token, std::string_view secret,
                     std::chrono::system_clock::time_point now) {
    const auto first = token.find('.');
    const auto last = token.rfind('.');
    if (first == std::string_view::npos || first == last || token.find('.', first + 1) != last) {
        throw ApiError::badToken("JWT must have three parts");
    }
    // The algorithm is ours to choose: a token that brings its own, "none" above all, is refused.
    const auto header = objectIn(token.substr(0, first));
    if (const auto algorithm = header.find("alg"); algorithm == header.end() || *algorithm != "HS256") {
        throw ApiError::badToken("JWT must be signed with HS256");
    }
    const auto given = fromBase64Url(token.substr(last + 1));
    const auto expected = sign(token.substr(0, last), secret);
    if (!given || given->size() != expected.size() ||
        sodium_memcmp(given->data(), expected.data(), expected.size()) != 0) {
        throw ApiError::badToken("JWT has a wrong signature");
    }
    const auto claims = objectIn(token.substr(first + 1, last - first - 1));
    checkTimes(claims, now);
    const auto role = claims.find("role");
    if (role != claims.end() && !role->is_string()) {
        throw ApiError::badToken("JWT claims cannot be read");
    }
    return {role != claims.end() ? role->get<std::string>() : "anon", claims.dump()};
}

} // namespace fernhollow::backend
