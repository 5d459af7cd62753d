#include "local/TableRequests.h"

#include "local/ApiError.h"
#include "local/SqlText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

namespace fernhollow::backend {

namespace {

ApiError noSuchTable(const std::string& name) {
    return {404, "42P01", "relation \"public." + name + "\" does not exist"};
}

ApiError notUnderstood(const std::string& what, const std::string& text) {
    return ApiError::badQuery("\"failed to parse " + what + " (" + text + ")\" (line 1, column 1)",
                              "unexpected or unsupported \"" + text + "\"");
}

/// Columns only; relations, casts, aliases and JSON paths are beyond this server.
std::vector<std::string> parseColumns(const std::string& list) {
    auto names = splitList(list);
    for (const auto& name : names) {
        if (name.find_first_of("()*:.>\"") != std::string::npos && name != "*") {
            throw notUnderstood("select parameter", name);
        }
    }
    return names == std::vector<std::string>{"*"} ? std::vector<std::string>() : names;
}

std::vector<std::pair<std::string, bool>> parseOrder(const std::string& list) {
    std::vector<std::pair<std::string, bool>> order;
    for (const auto& item : splitList(list)) {
        const auto dot = item.find('.');
        const auto direction = dot == std::string::npos ? "asc" : item.substr(dot + 1);
        if (direction != "asc" && direction != "desc") {
            throw notUnderstood("order", item);
        }
        order.emplace_back(item.substr(0, dot), direction == "desc");
    }
    return order;
}

std::string parseNumber(const std::string& name, const std::string& text) {
    if (text.empty() || text.size() > 18 || text.find_first_not_of("0123456789") != std::string::npos) {
        throw notUnderstood(name + " parameter", text);
    }
    return text;
}

std::string parseFilter(const std::string& condition) {
    constexpr std::string_view equals = "eq.";
    if (!condition.starts_with(equals)) {
        throw notUnderstood("filter", condition);
    }
    return condition.substr(equals.size());
}

TableWrite::Resolution parseResolution(const std::string& prefer) {
    const auto preferences = splitList(prefer);
    const auto wants = [&](const char* text) {
        return std::ranges::find(preferences, text) != preferences.end();
    };
    if (wants("resolution=merge-duplicates")) {
        return TableWrite::Resolution::MergeDuplicates;
    }
    return wants("resolution=ignore-duplicates") ? TableWrite::Resolution::IgnoreDuplicates
                                                 : TableWrite::Resolution::None;
}

std::vector<std::string> keysOf(const nlohmann::json& object) {
    if (!object.is_object()) {
        throw ApiError::badBody("Empty or invalid json");
    }
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items()) {
        keys.push_back(key);
    }
    return keys;
}

} // namespace

TableRead::TableRead(std::string tableName, const Request& request) : table(std::move(tableName)) {
    static const std::set<std::string> unsupported = {"and", "or", "not.and", "not.or"};
    for (const auto& [name, value] : parseQuery(request.query)) {
        if (name == "select") {
            columns = parseColumns(value);
        } else if (name == "order") {
            order = parseOrder(value);
        } else if (name == "limit") {
            limit = parseNumber(name, value);
        } else if (name == "offset") {
            offset = parseNumber(name, value);
        } else if (unsupported.contains(name)) {
            throw notUnderstood("logic tree", std::string(name).append("=").append(value));
        } else {
            filters.emplace_back(name, parseFilter(value));
        }
    }
}

Answer TableRead::run(const Session& session) const {
    auto& transaction = session.transaction;
    if (!session.catalogue.table(transaction, table)) {
        throw noSuchTable(table);
    }
    std::vector<std::string> values;
    const auto parameter = [&](const std::string& value) {
        values.push_back(value);
        return "$" + std::to_string(values.size());
    };
    std::string sql = "select coalesce(json_agg(_row), '[]') from (select ";
    sql += columns.empty() ? "*"
                           : joined(columns, ", ", [&](const auto& c) { return transaction.quote_name(c); });
    sql += " from public." + transaction.quote_name(table);
    sql += filters.empty() ? "" : " where ";
    sql += joined(filters, " and ", [&](const auto& filter) {
        return transaction.quote_name(filter.first) + " = " + parameter(filter.second);
    });
    sql += order.empty() ? "" : " order by ";
    sql += joined(order, ", ", [&](const auto& by) {
        return transaction.quote_name(by.first) + (by.second ? " desc" : "");
    });
    sql += limit ? " limit " + parameter(*limit) + "::bigint" : "";
    sql += offset ? " offset " + parameter(*offset) + "::bigint" : "";
    sql += ") as _row";
    const auto rows = transaction.exec_params(sql, pqxx::prepare::make_dynamic_params(values));
    return {200, rows.at(0)[0].as<std::string>(), {}};
}

TableWrite::TableWrite(std::string tableName, const Request& request)
    : table(std::move(tableName)), body(request.body), resolution(parseResolution(request.prefer)) {
    for (const auto& list : valuesOf(parseQuery(request.query), "on_conflict")) {
        conflictColumns = splitList(list);
    }
    const auto content = nlohmann::json::parse(body, nullptr, false);
    isArray = content.is_array();
    isEmpty = isArray && content.empty();
    if (!isArray) {
        columns = keysOf(content);
    } else if (!isEmpty) {
        columns = keysOf(content.front());
        for (const auto& object : content) {
            if (keysOf(object) != columns) {
                throw ApiError::badBody("All object keys must match");
            }
        }
    }
}

Answer TableWrite::run(const Session& session) const {
    const auto* target = session.catalogue.table(session.transaction, table);
    if (!target) {
        throw noSuchTable(table);
    }
    for (const auto& column : columns) {
        if (!target->has(column)) {
            throw ApiError(400, "PGRST204",
                           "Could not find the '" + column + "' column of '" + table +
                               "' in the schema cache");
        }
    }
    if (!isEmpty) {
        const auto sql = statement(session.transaction, *target);
        columns.empty() ? session.transaction.exec(sql) : session.transaction.exec_params(sql, body);
    }
    Answer answer{201, {}, {}};
    if (resolution != Resolution::None) {
        answer.headers.emplace_back("Preference-Applied", resolution == Resolution::MergeDuplicates
                                                              ? "resolution=merge-duplicates"
                                                              : "resolution=ignore-duplicates");
    }
    return answer;
}

std::string TableWrite::statement(const pqxx::work& transaction, const Table& target) const {
    const auto quoted = [&](const std::string& name) { return transaction.quote_name(name); };
    const auto name = "public." + quoted(table);
    if (columns.empty()) {
        return "insert into " + name + " default values";
    }
    const auto list = joined(columns, ", ", quoted);
    const std::string expand = isArray ? "json_populate_recordset" : "json_populate_record";
    auto sql = "insert into " + name + " (" + list + ") select " + list + " from " + expand +
               "(null::" + name + ", $1::json)";
    const auto& conflict = conflictColumns.empty() ? target.primaryKey : conflictColumns;
    if (resolution != Resolution::None && !conflict.empty()) {
        sql += " on conflict (" + joined(conflict, ", ", quoted) + ") do ";
        sql += resolution == Resolution::IgnoreDuplicates
                   ? "nothing"
                   : "update set " + joined(columns, ", ", [&](const std::string& column) {
                         return quoted(column) + " = excluded." + quoted(column);
                     });
    }
    return sql;
}

} // namespace fernhollow::backend
