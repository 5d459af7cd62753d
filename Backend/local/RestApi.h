#pragma once

#include "local/Database.h"
#include "local/Http.h"

#include <string>

namespace fernhollow::backend {

/// PostgREST's interface, as far as a client of counts needs it, with the gateway before it that a
/// hosted project has: /rest/v1/TABLE and /rest/v1/rpc/FUNCTION.
///
/// Knows no table and no function by name: what the database offers and permits is what it offers.
/// Called by many threads at once.
class RestApi {
public:
    RestApi(Database database, std::string secret);

    Answer handle(const Request& request) const;

private:
    Answer route(const Request& request) const;
    Identity authenticate(const Request& request) const;

    Database database_;
    std::string secret_;
};

} // namespace fernhollow::backend
