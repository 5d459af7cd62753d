"""Errors as PostgREST reports them."""

# HTTP statuses by SQLSTATE. A whole code comes before its class, which is its first two characters.
STATUSES = {
    "25006": 405, "42725": 300, "42883": 404, "42P01": 404, "42P17": 500, "53400": 500, "P0001": 400,
    **dict.fromkeys(["23503", "23505"], 409),
    **dict.fromkeys(["0L", "0P", "28"], 403),
    **dict.fromkeys(["08", "53", "57P01", "57P02", "57P03"], 503),
    **dict.fromkeys("09 25 2D 38 39 3B 40 54 55 57 58 F0 HV P0 XX".split(), 500),
}  # fmt: skip


class ApiError(Exception):
    """A request that ends with an error. Without a code it is an error of the gateway, which sends only a message."""

    def __init__(self, status, message, code=None, details=None, hint=None):
        super().__init__(f"{status} {message}")
        self.status = status
        self.content = {"message": message}
        if code:
            self.content.update(code=code, details=details, hint=hint)


def of_database(error, role):
    """The ApiError for psycopg's error. A missing right is 401 for an anonymous client, 403 for a known one."""
    diag = error.diag
    if not diag.message_primary:
        # No statement was answered. libpq's own text would reveal this machine's folders and users.
        return ApiError(503, "Could not connect with the database. Retrying the connection.", "PGRST000")
    status = STATUSES.get(error.sqlstate) or STATUSES.get(error.sqlstate[:2], 400)
    if error.sqlstate == "42501":
        status = 401 if role == "anon" else 403
    return ApiError(status, diag.message_primary, error.sqlstate, diag.message_detail, diag.message_hint)


def bad_token(message):
    return ApiError(401, message, "PGRST301")


def bad_body(message="Empty or invalid json"):
    return ApiError(400, message, "PGRST102")


def not_served(what, text):
    """The error for a request that PostgREST would serve and this server does not, so that it is never ignored."""
    return ApiError(400, f'"failed to parse {what} ({text})" (line 1, column 1)', "PGRST100")
