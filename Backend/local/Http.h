#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fernhollow::backend {

using NamedValues = std::vector<std::pair<std::string, std::string>>;

/// What a client asks, apart from how it travelled.
struct Request {
    std::string method;
    std::string path;  // decoded
    std::string query; // as it came, still encoded
    std::string apiKey;
    std::string authorization;
    std::string contentType;
    std::string prefer;
    std::string body;
};

/// What it is told. A body is JSON, always.
struct Answer {
    int status = 200;
    std::string body;
    NamedValues headers;
};

/// The items of a query in their order, decoded: %2B is a plus, a bare plus a blank. Throws ApiError for
/// an encoding that is none and for a NUL, which no text in the database can hold.
NamedValues parseQuery(std::string_view query);

/// The values of `name`; the last one wins elsewhere, here the caller decides.
std::vector<std::string> valuesOf(const NamedValues& values, std::string_view name);

/// "a, b" as "a" and "b", without blanks around them; nothing for nothing.
std::vector<std::string> splitList(std::string_view list);

} // namespace fernhollow::backend
