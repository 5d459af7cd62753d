#pragma once

#include "local/Database.h"
#include "local/Http.h"

#include <string>
#include <vector>

namespace fernhollow::backend {

/// A POST to a function: its arguments by name, as one JSON object.
struct FunctionCall {
    std::string function;
    std::vector<std::string> names;
    std::string body;

    /// Throws ApiError for a body that is no object. No body at all gives no arguments.
    FunctionCall(std::string functionName, const Request& request);
    Answer run(const Session& session) const;

private:
    const Function& choose(const std::vector<Function>& candidates) const;
    std::string statement(const pqxx::work& transaction, const Function& chosen) const;
};

} // namespace fernhollow::backend
