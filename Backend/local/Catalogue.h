#pragma once

#include <map>
#include <string>
#include <vector>

namespace pqxx {
class transaction_base;
}

namespace fernhollow::backend {

/// A table or view of the exposed schema.
struct Table {
    std::vector<std::string> columns;
    std::vector<std::string> primaryKey;

    bool has(const std::string& column) const;
};

struct Argument {
    std::string name;
    std::string type; // as SQL writes it
    bool isRequired = true;
};

/// One function of the exposed schema; overloads are several.
struct Function {
    std::vector<Argument> arguments;
    bool isVoid = false;
    bool returnsSet = false;
    bool returnsRows = false; // rather than plain values

    /// Whether a call with exactly these names is possible.
    bool takes(const std::vector<std::string>& names) const;
};

/// What the schema "public" offers, asked of the database when it is first needed and remembered.
///
/// Belongs to one connection and its thread. What was not found is asked again the next time, so new
/// tables and functions appear by themselves; forget() makes changed ones appear.
class Catalogue {
public:
    /// Null when there is no such table.
    const Table* table(pqxx::transaction_base& transaction, const std::string& name);
    /// The functions of that name; none when there is none.
    const std::vector<Function>& functions(pqxx::transaction_base& transaction, const std::string& name);
    void forget();

private:
    std::map<std::string, Table> tables_;
    std::map<std::string, std::vector<Function>> functions_;
};

} // namespace fernhollow::backend
