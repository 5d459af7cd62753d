"""The requests that are served, from their path and headers to the statement."""

import json
import re
import time
from urllib.parse import unquote

from . import statements, tokens
from .errors import ApiError, bad_body, not_served

TABLES = "/rest/v1/"
FUNCTIONS = "/rest/v1/rpc/"


def _expect_servable(headers):
    """Refuses a request for anything but all rows as JSON."""
    wanted = (headers.get(name, "").split(",")[0].split(";")[0] for name in ("Accept", "Content-Type"))
    accepted, content = (media_type.strip().lower() for media_type in wanted)
    if accepted not in ("", "*/*", "application/*", "application/json"):
        raise ApiError(406, f"None of these media types are available: {accepted}", "PGRST107")
    if content not in ("", "application/json"):
        raise ApiError(415, f"Content-Type not acceptable: {content}", "PGRST107")
    if {headers.get("Accept-Profile", "public"), headers.get("Content-Profile", "public")} != {"public"}:
        raise ApiError(406, "The schema must be one of the following: public", "PGRST106")
    if "Range" in headers:
        raise not_served("Range header", headers["Range"])


def _resolution(headers):
    """What to do with rows that exist already. Refuses all preferences that would change an answer."""
    found = None
    for preference in ",".join(headers.get_all("Prefer", [])).split(","):
        name, _, value = preference.strip().partition("=")
        if name == "resolution" and value in ("merge-duplicates", "ignore-duplicates"):
            found = value
        elif (name, value) not in (("", ""), ("return", "minimal")):
            raise not_served("Prefer header", preference.strip())
    return found


class Api:
    """Answers requests for one database, from any thread."""

    def __init__(self, database, secret):
        self._database = database
        self._secret = secret

    def answer(self, method, target, headers, body):
        """The status, the JSON and the applied preference. Raises ApiError when there is no answer."""
        path, _, query = target.partition("?")
        path = unquote(path)
        if not path.startswith(TABLES):
            raise ApiError(404, "no Route matched with those values")
        role, claims = self._identity(headers)
        _expect_servable(headers)
        resolution = _resolution(headers)
        is_function = path.startswith(FUNCTIONS)
        name = path.removeprefix(FUNCTIONS if is_function else TABLES)
        if not re.fullmatch(r"[^/\0\ufffd]+", name):
            raise ApiError(404, "Invalid path specified in request URL", "PGRST125")
        if method not in (("POST",) if is_function else ("GET", "HEAD", "POST")):
            code = "PGRST101" if is_function else "PGRST117"
            raise ApiError(405, f"Unsupported HTTP method: {method}", code)
        try:
            text = body.decode()
        except UnicodeDecodeError:
            raise bad_body() from None
        known = json.dumps({name.lower(): text for name, text in headers.items()})
        with self._database.transaction(role, claims, method, path, known) as connection:
            if is_function:
                answer = statements.call(connection, name, query, text)
                return (200 if answer else 204), answer, None
            if method == "POST":
                return 201, statements.write(connection, name, query, text, resolution), resolution
            return 200, statements.read(connection, name, query), None

    def _identity(self, headers):
        """The role and claims of the request. The key is required; a token, if there is one, decides instead of it."""
        if not headers.get("apikey"):
            raise ApiError(401, "No API key found in request")
        identity = tokens.verify(headers["apikey"], self._secret, time.time())
        scheme, _, token = headers.get("Authorization", "").partition(" ")
        return tokens.verify(token, self._secret, time.time()) if scheme.lower() == "bearer" else identity
