#pragma once

#include "Backend/Postgres.h"
#include "local/HttpServer.h"
#include "local/RestApi.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <httplib.h>
#include <sodium.h>
#include <string>
#include <thread>

namespace fernhollow::backend::tests {

using nlohmann::json;

constexpr auto secret = "fernhollow-local-development-only-secret";

inline std::string base64Url(const std::string& text) {
    constexpr int variant = sodium_base64_VARIANT_URLSAFE_NO_PADDING;
    std::string encoded(sodium_base64_encoded_len(text.size(), variant), '\0');
    sodium_bin2base64(encoded.data(), encoded.size(), reinterpret_cast<const unsigned char*>(text.data()),
                      text.size(), variant);
    encoded.pop_back(); // the NUL
    return encoded;
}

/// A token that is signed correctly, whatever it says.
inline std::string token(const json& claims, const json& header = {{"alg", "HS256"}, {"typ", "JWT"}},
                         const std::string& key = secret) {
    const auto text = base64Url(header.dump()) + "." + base64Url(claims.dump());
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    std::string signature(crypto_auth_hmacsha256_BYTES, '\0');
    crypto_auth_hmacsha256_state state;
    crypto_auth_hmacsha256_init(&state, reinterpret_cast<const unsigned char*>(key.data()), key.size());
    crypto_auth_hmacsha256_update(&state, bytes, text.size());
    crypto_auth_hmacsha256_final(&state, reinterpret_cast<unsigned char*>(signature.data()));
    return text + "." + base64Url(signature);
}

/// What a client sends with every request.
inline httplib::Headers clientHeaders(const std::string& key = DEFAULT_KEY) {
    return {{"apikey", key}, {"Authorization", "Bearer " + key}};
}

/// The server on a free port in front of the tests' database.
class RunningBackend {
public:
    explicit RunningBackend(ServerLimits limits = {},
                            std::chrono::milliseconds statementTimeout = std::chrono::seconds(10))
        : api_(Database(Postgres::authenticator, statementTimeout), secret),
          server_(limits, [this](const Request& request) { return api_.handle(request); }),
          port_(server_.bind(0)), thread_([this] { server_.serve(); }) {}

    ~RunningBackend() {
        // A request in between makes sure that there is something to stop.
        client().Get("/");
        server_.stop();
        thread_.join();
    }
    RunningBackend(const RunningBackend&) = delete;
    RunningBackend& operator=(const RunningBackend&) = delete;

    int port() const { return port_; }

    httplib::Client client() const {
        httplib::Client client("127.0.0.1", port_);
        client.set_keep_alive(true);
        client.set_read_timeout(30);
        client.set_tcp_nodelay(true);
        client.set_url_encode(false); // a target goes out as a test wrote it
        return client;
    }

    httplib::Result get(const std::string& target) const {
        return client().Get("/rest/v1/" + target, clientHeaders());
    }

    httplib::Result post(const std::string& target, const std::string& body,
                         httplib::Headers extra = {}) const {
        extra.merge(clientHeaders());
        return client().Post("/rest/v1/" + target, extra, body, "application/json");
    }

    httplib::Result upsert(const std::string& table, const std::string& conflict, const json& row) const {
        return post(table + "?on_conflict=" + conflict, row.dump(),
                    {{"Prefer", "resolution=merge-duplicates"}});
    }

    json call(const std::string& function, const json& arguments) const {
        const auto answer = post("rpc/" + function, arguments.dump());
        EXPECT_EQ(answer->status, 200) << answer->body;
        return json::parse(answer->body);
    }

private:
    RestApi api_;
    HttpServer server_;
    int port_;
    std::thread thread_;
};

} // namespace fernhollow::backend::tests
