#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace fernhollow::backend {

/// Whom a request becomes in the database.
struct Identity {
    std::string role;
    std::string claims; // the token's payload, JSON

    bool isAnonymous() const { return role == "anon"; }
};

/// Checks a JSON Web Token: HS256 with `secret` and nothing else, not expired at `now`, for 30 seconds of
/// clocks that differ. Throws ApiError. A token without a role is anonymous.
Identity verifyToken(std::string_view token, std::string_view secret,
                     std::chrono::system_clock::time_point now);

} // namespace fernhollow::backend
