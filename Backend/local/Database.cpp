#include "local/Database.h"

#include "local/ApiError.h"

#include <memory>
#include <poll.h>
#include <stdexcept>

namespace fernhollow::backend {

namespace {

/// A connection, and what was learnt through it.
struct Link {
    explicit Link(const std::string& connectionString)
        : connectionString(connectionString), connection(connectionString), quiet(connection) {
        connection.set_client_encoding("UTF8");
        connection.set_verbosity(pqxx::connection_base::verbose);
    }

    /// An idle server says nothing unless it takes its leave.
    bool isAlive() {
        pollfd socket{connection.sock(), POLLIN, 0};
        return connection.is_open() && poll(&socket, 1, 0) == 0;
    }

    std::string connectionString;
    pqxx::connection connection;
    // Notices hold pieces of what was sent, and nobody reads them.
    pqxx::quiet_errorhandler quiet;
    Catalogue catalogue;
};

thread_local std::unique_ptr<Link> threadsLink;

Link& livingLink(const std::string& connectionString) {
    if (!threadsLink || threadsLink->connectionString != connectionString || !threadsLink->isAlive()) {
        threadsLink.reset();
        threadsLink = std::make_unique<Link>(connectionString);
    }
    return *threadsLink;
}

/// After a failure: keeps the connection if it is still good for the next request.
bool keepLivingLink(bool isCatalogueDoubtful) {
    if (threadsLink && !threadsLink->isAlive()) {
        threadsLink.reset();
    }
    if (threadsLink && isCatalogueDoubtful) {
        threadsLink->catalogue.forget();
    }
    return threadsLink != nullptr;
}

} // namespace

Database::Database(std::string connectionString, std::chrono::milliseconds statementTimeout)
    : connectionString_(std::move(connectionString)),
      statementTimeout_(std::to_string(statementTimeout.count())) {}

void Database::expectReachable() const {
    try {
        pqxx::connection(connectionString_).disconnect();
    } catch (const pqxx::failure& problem) {
        const std::string reason = problem.what();
        throw std::runtime_error("the database cannot be reached: " + reason.substr(0, reason.find('\n')));
    }
}

Answer Database::transact(const Identity& identity, const Request& request,
                          const std::function<Answer(const Session&)>& work) const {
    try {
        auto& link = livingLink(connectionString_);
        pqxx::work transaction(link.connection);
        transaction.exec_params("select set_config('search_path', 'public', true),"
                                " set_config('statement_timeout', $1, true),"
                                " set_config('request.method', $2, true),"
                                " set_config('request.path', $3, true),"
                                " set_config('request.jwt.claims', $4, true),"
                                " set_config('role', $5, true)",
                                statementTimeout_, request.method, request.path, identity.claims,
                                identity.role);
        auto answer = work({transaction, link.catalogue});
        transaction.commit();
        return answer;
    } catch (const pqxx::sql_error& error) {
        // A name that is not there may have been there when we looked.
        auto known = ApiError::fromDatabase(error, identity.isAnonymous());
        keepLivingLink(known.code().starts_with("42"));
        throw known;
    } catch (const pqxx::failure&) {
        // On a living connection only a name can fail that is not text.
        throw keepLivingLink(false) ? ApiError::badQuery("failed to read a name", "invalid UTF-8")
                                    : ApiError::databaseAway();
    }
}

} // namespace fernhollow::backend
