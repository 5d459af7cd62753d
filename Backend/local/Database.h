#pragma once

#include "local/AccessToken.h"
#include "local/Catalogue.h"
#include "local/Http.h"

#include <chrono>
#include <functional>
#include <pqxx/pqxx>
#include <string>

namespace fernhollow::backend {

/// What a request works with: its transaction, already in the role of whoever asks, and the catalogue.
struct Session {
    pqxx::work& transaction;
    Catalogue& catalogue;
};

/// The database behind the requests: one transaction a request.
///
/// Every thread that calls has a connection of its own, opened when it first needs one and again after
/// the database went away, so there are as many as the server has threads. The object itself never
/// changes and may be used by all of them.
class Database {
public:
    Database(std::string connectionString, std::chrono::milliseconds statementTimeout);

    /// Throws std::runtime_error, with a sentence for a person, when nobody answers.
    void expectReachable() const;

    /// Runs `work` as `identity` and commits; whatever it throws rolls back. Failures of the database
    /// become ApiErrors.
    Answer transact(const Identity& identity, const Request& request,
                    const std::function<Answer(const Session&)>& work) const;

private:
    std::string connectionString_;
    std::string statementTimeout_;
};

} // namespace fernhollow::backend
