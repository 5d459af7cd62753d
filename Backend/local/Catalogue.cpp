#include "local/Catalogue.h"

#include <algorithm>
#include <pqxx/pqxx>

namespace fernhollow::backend {

namespace {

constexpr auto columnsOfTable = R"(
    select a.attname, coalesce(a.attnum = any (i.indkey), false)
    from pg_catalog.pg_class c
    join pg_catalog.pg_attribute a on a.attrelid = c.oid and a.attnum > 0 and not a.attisdropped
    left join pg_catalog.pg_index i on i.indrelid = c.oid and i.indisprimary
    where c.relnamespace = 'public'::regnamespace and c.relname = $1 and c.relkind in ('r', 'p', 'v', 'm', 'f')
    order by a.attnum)";

// One row for an argument that a caller gives; one with nulls for a function without any. Arguments that
// have no name cannot be given by name.
constexpr auto argumentsOfFunctions = R"(
    select p.oid, p.prorettype = 'void'::regtype, p.proretset,
           t.typtype = 'c' or p.prorettype = 'record'::regtype or coalesce(p.proargmodes && '{o,b,t}', false),
           coalesce(a.name, ''), pg_catalog.format_type(a.type, null),
           a.given > p.pronargs - p.pronargdefaults
    from pg_catalog.pg_proc p
    join pg_catalog.pg_type t on t.oid = p.prorettype
    left join lateral (
        select u.name, u.type, row_number() over (order by u.place) as given
        from unnest(coalesce(p.proallargtypes, p.proargtypes::oid[]), p.proargnames, p.proargmodes)
            with ordinality as u (type, name, mode, place)
        where u.type is not null and coalesce(u.mode, 'i') in ('i', 'b', 'v')
    ) a on true
    where p.pronamespace = 'public'::regnamespace and p.proname = $1 and p.prokind = 'f'
    order by p.oid, a.given)";

} // namespace

bool Table::has(const std::string& column) const {
    return std::ranges::find(columns, column) != columns.end();
}

bool Function::takes(const std::vector<std::string>& names) const {
    const auto isGiven = [&](const Argument& argument) {
        return std::ranges::find(names, argument.name) != names.end();
    };
    const auto given = std::ranges::count_if(arguments, isGiven);
    return given == std::ssize(names) && std::ranges::all_of(arguments, [&](const Argument& argument) {
               return !argument.isRequired || isGiven(argument);
           });
}

const Table* Catalogue::table(pqxx::transaction_base& transaction, const std::string& name) {
    auto known = tables_.find(name);
    if (known == tables_.end()) {
        Table table;
        for (const auto& row : transaction.exec_params(columnsOfTable, name)) {
            table.columns.push_back(row[0].as<std::string>());
            if (row[1].as<bool>()) {
                table.primaryKey.push_back(table.columns.back());
            }
        }
        if (table.columns.empty()) {
            return nullptr;
        }
        known = tables_.emplace(name, std::move(table)).first;
    }
    return &known->second;
}

const std::vector<Function>& Catalogue::functions(pqxx::transaction_base& transaction,
                                                  const std::string& name) {
    static const std::vector<Function> none;
    auto known = functions_.find(name);
    if (known == functions_.end()) {
        std::vector<Function> found;
        std::string current;
        for (const auto& row : transaction.exec_params(argumentsOfFunctions, name)) {
            if (const auto id = row[0].as<std::string>(); id != current) {
                current = id;
                found.push_back({{}, row[1].as<bool>(), row[2].as<bool>(), row[3].as<bool>()});
            }
            if (!row[5].is_null()) {
                found.back().arguments.push_back(
                    {row[4].as<std::string>(), row[5].as<std::string>(), !row[6].as<bool>()});
            }
        }
        if (found.empty()) {
            return none;
        }
        known = functions_.emplace(name, std::move(found)).first;
    }
    return known->second;
}

void Catalogue::forget() {
    tables_.clear();
    functions_.clear();
}

} // namespace fernhollow::backend
