#include "local/FunctionCall.h"

#include "local/ApiError.h"
#include "local/SqlText.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace fernhollow::backend {

namespace {

ApiError noSuchFunction(const std::string& function, const std::vector<std::string>& names) {
    const auto list = joined(names, ", ", [](const std::string& name) { return name; });
    const auto call = "public." + function + (names.empty() ? "" : "(" + list + ")");
    return {404, "PGRST202", "Could not find the function " + call + " in the schema cache",
            "Searched for the function public." + function +
                (names.empty() ? " without parameters" : " with parameters " + list) +
                ", but no matches were found in the schema cache."};
}

} // namespace

FunctionCall::FunctionCall(std::string functionName, const Request& request)
    : function(std::move(functionName)), body(request.body.empty() ? "{}" : request.body) {
    const auto content = nlohmann::json::parse(body, nullptr, false);
    if (!content.is_object()) {
        throw ApiError::badBody("Empty or invalid json");
    }
    for (const auto& [key, value] : content.items()) {
        names.push_back(key);
    }
}

Answer FunctionCall::run(const Session& session) const {
    auto& transaction = session.transaction;
    const auto& chosen = choose(session.catalogue.functions(transaction, function));
    const auto sql = statement(transaction, chosen);
    const auto rows = names.empty() ? transaction.exec(sql) : transaction.exec_params(sql, body);
    if (chosen.isVoid) {
        return {204, {}, {}};
    }
    return {200, rows.empty() || rows[0][0].is_null() ? "null" : rows[0][0].as<std::string>(), {}};
}

const Function& FunctionCall::choose(const std::vector<Function>& candidates) const {
    const auto fits = [&](const Function& candidate) { return candidate.takes(names); };
    const auto first = std::ranges::find_if(candidates, fits);
    if (first == candidates.end()) {
        throw noSuchFunction(function, names);
    }
    if (std::find_if(first + 1, candidates.end(), fits) != candidates.end()) {
        throw ApiError(300, "PGRST203", "Could not choose the best candidate function of public." + function);
    }
    return *first;
}

std::string FunctionCall::statement(const pqxx::work& transaction, const Function& chosen) const {
    const auto quoted = [&](const std::string& name) { return transaction.quote_name(name); };
    const auto type = [&](const std::string& name) {
        return std::ranges::find(chosen.arguments, name, &Argument::name)->type;
    };
    const auto call =
        "public." + quoted(function) + "(" +
        joined(names, ", ", [&](const auto& name) { return quoted(name) + " => _given." + quoted(name); }) +
        ")";
    const auto given =
        "json_to_record($1::json) as _given (" +
        joined(names, ", ", [&](const auto& name) { return quoted(name) + " " + type(name); }) + ")";
    const auto from = names.empty() ? call : given + ", lateral " + call;
    const std::string rows = chosen.returnsSet ? "coalesce(json_agg(_row), '[]')" : "to_json(_row)";
    if (chosen.returnsRows) {
        // As a table: a function of rows with one column would otherwise give bare values.
        return "select " + rows + " from (select _called.* from " + from + " as _called) as _row";
    }
    if (chosen.returnsSet) {
        return "select " + rows + " from " + from + " as _row";
    }
    const auto value = "select " + (chosen.isVoid ? call : "to_json(" + call + ")");
    return names.empty() ? value : value + " from " + given;
}

} // namespace fernhollow::backend
