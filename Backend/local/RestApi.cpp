#include "local/RestApi.h"

#include "local/ApiError.h"
#include "local/FunctionCall.h"
#include "local/TableRequests.h"

#include <string_view>
#include <strings.h>

namespace fernhollow::backend {

namespace {

constexpr std::string_view tables = "/rest/v1/";
constexpr std::string_view functions = "/rest/v1/rpc/";

// The gateway's own errors have a message and nothing more.
Answer refusal(int status, const std::string& message) {
    return {status, "{\"message\":\"" + message + "\"}", {}};
}

void expectJson(const Request& request) {
    constexpr const char* json = "application/json";
    const auto end = request.contentType.find_first_of("; ");
    const auto type = request.contentType.substr(0, end);
    if (!type.empty() && strcasecmp(type.c_str(), json) != 0) {
        throw ApiError(415, "PGRST107", "Content-Type not acceptable: " + request.contentType);
    }
}

/// The rest of the path as one name; empty when it is none.
std::string nameAfter(std::string_view prefix, const std::string& path) {
    const auto name = path.substr(prefix.size());
    const bool isName = name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
    return isName ? name : std::string();
}

} // namespace

RestApi::RestApi(Database database, std::string secret)
    : database_(std::move(database)), secret_(std::move(secret)) {}

Answer RestApi::handle(const Request& request) const {
    if (!request.path.starts_with(tables)) {
        return refusal(404, "no Route matched with those values");
    }
    try {
        return route(request);
    } catch (const ApiError& error) {
        return error.answer();
    }
}

Answer RestApi::route(const Request& request) const {
    if (request.apiKey.empty()) {
        return refusal(401, "No API key found in request");
    }
    const auto identity = authenticate(request);
    const bool isFunction = request.path.starts_with(functions);
    const auto name = nameAfter(isFunction ? functions : tables, request.path);
    if (name.empty()) {
        throw ApiError(404, "PGRST125", "Invalid path specified in request URL");
    }
    const auto run = [&](const auto& operation) {
        return database_.transact(identity, request,
                                  [&](const Session& session) { return operation.run(session); });
    };
    if (request.method == "POST") {
        expectJson(request);
        return isFunction ? run(FunctionCall(name, request)) : run(TableWrite(name, request));
    }
    if ((request.method == "GET" || request.method == "HEAD") && !isFunction) {
        return run(TableRead(name, request));
    }
    throw isFunction ? ApiError(405, "PGRST101", "Cannot use the " + request.method + " method on RPC")
                     : ApiError(405, "PGRST117", "Unsupported HTTP method: " + request.method);
}

Identity RestApi::authenticate(const Request& request) const {
    const auto now = std::chrono::system_clock::now();
    constexpr std::string_view scheme = "Bearer ";
    auto key = verifyToken(request.apiKey, secret_, now);
    if (strncasecmp(request.authorization.c_str(), scheme.data(), scheme.size()) != 0) {
        return key;
    }
    return verifyToken(std::string_view(request.authorization).substr(scheme.size()), secret_, now);
}

} // namespace fernhollow::backend
