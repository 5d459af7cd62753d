#pragma once

#include "local/Database.h"
#include "local/Http.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace fernhollow::backend {

/// A GET of a table: `select`, filters with `eq.`, `order`, `limit` and `offset`.
struct TableRead {
    std::string table;
    std::vector<std::string> columns; // none: all
    NamedValues filters;
    std::vector<std::pair<std::string, bool>> order; // true: descending
    std::optional<std::string> limit;
    std::optional<std::string> offset;

    /// Throws ApiError for what it does not understand.
    TableRead(std::string tableName, const Request& request);
    Answer run(const Session& session) const;
};

/// A POST to a table: inserts an object or an array of them, all with the same keys.
struct TableWrite {
    enum class Resolution { None, MergeDuplicates, IgnoreDuplicates };

    std::string table;
    std::vector<std::string> columns;
    bool isArray = false;
    bool isEmpty = false;
    std::string body;
    std::vector<std::string> conflictColumns; // none: the primary key
    Resolution resolution = Resolution::None;

    /// Throws ApiError for what it does not understand.
    TableWrite(std::string tableName, const Request& request);
    Answer run(const Session& session) const;

private:
    std::string statement(const pqxx::work& transaction, const Table& target) const;
};

} // namespace fernhollow::backend
