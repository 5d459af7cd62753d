"""Requests as SQL. The database writes and reads the JSON, so that the values are PostgreSQL's own.

Each function takes a connection in its transaction and returns the answer's JSON; empty for no answer.
"""

import json
import re
from urllib.parse import parse_qsl

from psycopg import sql

from .errors import ApiError, bad_body, not_served

# For the functions of a name: whether they return nothing, a set, and rows instead of plain values.
RETURNS = """
    select distinct p.prorettype = 'void'::regtype, p.proretset,
        t.typtype = 'c' or p.prorettype = 'record'::regtype or coalesce(p.proargmodes && '{o,b,t}', false)
    from pg_catalog.pg_proc p join pg_catalog.pg_type t on t.oid = p.prorettype
    where p.pronamespace = 'public'::regnamespace and p.prokind = 'f' and p.proname = %s"""


class _Name(sql.Identifier):
    """An identifier in a statement that marks its parameters with a per cent sign."""

    def as_bytes(self, context=None):
        return super().as_bytes(context).replace(b"%", b"%%")


def _name(*parts):
    if "\0" in "".join(parts):
        raise ApiError(400, "a name holds a NUL", "PGRST100")
    return _Name(*parts)


def _list(items, separator=", "):
    return sql.SQL(separator).join(items)


def _items(query):
    """The items of a query, decoded: %2B is a plus, a bare plus a blank."""
    try:
        return parse_qsl(query, keep_blank_values=True, errors="strict")
    except UnicodeDecodeError:
        raise not_served("query", "not UTF-8") from None


def _columns(what, text, of_table=None):
    """A list of plain columns; relations, casts, aliases, aggregates and JSON paths are not served."""
    names = [name.strip() for name in text.split(",")]
    if any(not name or re.search(r'[()*:.>"]', name) for name in names):
        raise not_served(what, text)
    prefix = of_table + sql.SQL(".") if of_table else sql.SQL("")
    return _list(prefix + _name(name) for name in names)


def _term(text):
    column, _, direction = text.strip().partition(".")
    if direction not in ("", "asc", "desc"):
        raise not_served("order", text)
    return _columns("order", column) + sql.SQL(" desc" if direction == "desc" else "")


def _window(limits):
    """PostgREST's LIMIT and OFFSET, and their values."""
    if not limits:
        return sql.SQL(""), []
    amount = sql.SQL("%s" if "limit" in limits else "ALL")
    values = [limits["limit"]] if "limit" in limits else []
    return sql.SQL("LIMIT {} OFFSET %s").format(amount), [*values, limits.get("offset", "0")]


def read(connection, table, query):
    """A GET of a table, as PostgREST writes it: policies read the statement, because no setting has the query."""
    source = _name("public", table)
    columns, order, conditions, values, limits = source + sql.SQL(".*"), sql.SQL(""), [], [], {}
    for name, text in _items(query):
        if name == "select":
            columns = columns if text == "*" else _columns("select parameter", text, source)
        elif name == "order":
            order = sql.SQL("ORDER BY ") + _list(map(_term, text.split(",")))
        elif name in ("limit", "offset"):
            limits[name] = text
        elif text.startswith("eq.") and name not in ("and", "or", "not.and", "not.or"):
            conditions.append(sql.SQL(" {}.{} = %s").format(source, _name(name)))
            values.append(text.removeprefix("eq."))
        else:
            raise not_served("filter", f"{name}={text}")
    where = sql.SQL("WHERE ") + _list(conditions, " AND ") if conditions else sql.SQL("")
    window, bounds = _window(limits)
    statement = sql.SQL(
        "WITH pgrst_source AS ( SELECT {} FROM {}  {} {} {} ) "
        " SELECT coalesce(json_agg(_postgrest_t), '[]')::text AS body FROM ( SELECT * FROM pgrst_source ) _postgrest_t"
    ).format(columns, source, where, order, window)
    return connection.execute(statement, [*values, *bounds]).fetchone()[0]


def _parsed(text):
    """The JSON of a body as Python reads it; the database reads `text` itself."""

    def refuse(constant):
        raise ValueError(constant)

    try:
        return json.loads(text, parse_float=str, parse_constant=refuse)
    except (ValueError, RecursionError):
        raise bad_body() from None


def write(connection, table, query, text, resolution):
    """A POST to a table: inserts an object or an array of objects, all with the same keys."""
    keys = None
    for name, keys in _items(query):
        if name != "on_conflict":
            raise not_served("parameter", f"{name}={keys}")
    content = _parsed(text)
    rows = content if isinstance(content, list) else [content]
    if not all(isinstance(row, dict) and row for row in rows):
        raise bad_body()
    if any(row.keys() != rows[0].keys() for row in rows):
        raise bad_body("All object keys must match")
    if not rows:
        return ""
    columns, conflict = [_name(column) for column in rows[0]], sql.SQL("")
    if resolution and not keys:
        raise not_served("resolution without on_conflict", table)
    if resolution:
        changes = _list(sql.SQL("{0} = excluded.{0}").format(column) for column in columns)
        is_kept = resolution == "ignore-duplicates"
        change = sql.SQL("nothing") if is_kept else sql.SQL("update set ") + changes
        conflict = sql.SQL("on conflict ({}) do {}").format(_columns("on_conflict", keys), change)
    statement = sql.SQL(
        "insert into {0} ({1}) select {1} from json_populate_recordset(null::{0}, %s::json) {2}"
    ).format(_name("public", table), _list(columns), conflict)
    connection.execute(statement, [text if rows is content else f"[{text}]"])
    return ""


def _argument(value):
    """A text without a type, which PostgreSQL converts to the type of the parameter."""
    if isinstance(value, (dict, list)):
        raise not_served("argument", "only texts, numbers, booleans and null")
    return value if value is None or isinstance(value, str) else json.dumps(value)


def call(connection, function, query, text):
    """A POST to a function: its arguments by name, as one JSON object."""
    for name, value in _items(query):
        raise not_served("parameter of a function", f"{name}={value}")
    given = _parsed(text or "{}")
    if not isinstance(given, dict):
        raise bad_body()
    values = [_argument(value) for value in given.values()]
    found = connection.execute(RETURNS, [function]).fetchall()
    if len(found) != 1:
        wrong = (300, "choose the best candidate for", "PGRST203") if found else (404, "find", "PGRST202")
        raise ApiError(wrong[0], f"Could not {wrong[1]} the function public.{function}", wrong[2])
    ((is_void, is_set, is_row),) = found
    arguments = _list(sql.SQL("{} => %s").format(_name(name)) for name in given)
    # Rows are selected as a table, because rows with one column would otherwise become bare values.
    source = "(select _called.* from {}({}) as _called)" if is_row else "{}({})"
    answer = "coalesce(json_agg(_row), '[]')::text" if is_set else "coalesce(to_json(_row), 'null')::text"
    statement = sql.SQL("select " + ("''" if is_void else answer) + f" from {source} as _row")
    statement = statement.format(_name("public", function), arguments)
    return connection.execute(statement, values).fetchone()[0]
