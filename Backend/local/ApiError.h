#pragma once

#include "local/Http.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace pqxx {
class sql_error;
}

namespace fernhollow::backend {

/// A request that ends with an error: the status and what PostgREST says in the body.
class ApiError : public std::runtime_error {
public:
    using Optional = std::optional<std::string>;

    ApiError(int status, std::string code, const std::string& message, Optional details = {},
             Optional hint = {});

    /// The database refused the statement, on a connection with verbose errors: the library knows the code of
    /// some errors only from their text. A stranger is not let in where somebody known is forbidden.
    static ApiError fromDatabase(const pqxx::sql_error& error, bool isAnonymous);
    static ApiError databaseAway();
    static ApiError badToken(const std::string& message);
    static ApiError badQuery(const std::string& message, const std::string& details);
    static ApiError badBody(const std::string& message);

    const std::string& code() const { return code_; }
    Answer answer() const;

private:
    int status_;
    std::string code_;
    Optional details_;
    Optional hint_;
};

/// The HTTP status that PostgREST gives to an error of the database.
int statusOfDatabaseError(std::string_view sqlState, bool isAnonymous);

} // namespace fernhollow::backend
