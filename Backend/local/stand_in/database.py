"""The database behind the requests."""

import collections
import contextlib
import select
import threading

import psycopg

from .errors import ApiError, of_database

SETTINGS = """
    select set_config('search_path', 'public', true), set_config('statement_timeout', %s, true),
           set_config('request.method', %s, true), set_config('request.path', %s, true),
           set_config('request.headers', %s, true), set_config('request.jwt.claims', %s, true),
           set_config('role', %s, true)"""


def _is_alive(connection):
    """An idle server sends nothing until it closes the connection, so anything to read means that it is closed."""
    poll = select.poll()
    poll.register(connection.fileno(), select.POLLIN)
    return not poll.poll(0)


class Database:
    """One transaction for each request, on any thread, over at most `connections` connections.

    A connection is opened when all others are in use, and again after the database was unreachable. `pre_request` is
    PostgREST's db-pre-request, as Backend/migrate sets it: a function that each transaction calls first.
    """

    def __init__(self, conninfo, connections=8, statement_timeout=10, pre_request="fernhollow.check_request"):
        self._conninfo = conninfo
        self._pre_request = pre_request and f"select {pre_request}()"
        self._timeout = f"{statement_timeout * 1000:.0f}"
        self._connections = connections
        self._free = threading.Semaphore(connections)
        self._idle = collections.deque()  # used last in, first out: that connection has prepared statements

    def connect(self):
        return psycopg.connect(self._conninfo, autocommit=True, client_encoding="UTF8")

    def close(self):
        """Waits until no request holds a connection; later requests wait for ever."""
        for _ in range(self._connections):
            self._free.acquire()
        while self._idle:
            self._idle.pop().close()

    @contextlib.contextmanager
    def transaction(self, role, claims, method, path, headers):
        """A connection in a transaction as `role`, committed at the end; failures become ApiErrors."""
        try:
            with self._free, self._lent() as connection, connection.transaction():
                connection.execute(SETTINGS, [self._timeout, method, path, headers, claims, role])
                if self._pre_request:
                    connection.execute(self._pre_request)
                yield connection
        except psycopg.Error as error:
            if isinstance(error, psycopg.DataError) and not error.sqlstate:
                raise ApiError(400, "a text holds a NUL", "22021") from error
            raise of_database(error, role) from error
        except UnicodeEncodeError as error:
            raise ApiError(400, "a text holds half of a surrogate pair", "22021") from error

    def _living(self):
        with contextlib.suppress(IndexError):
            while connection := self._idle.pop():
                if _is_alive(connection):
                    return connection
                connection.close()
        return self.connect()

    @contextlib.contextmanager
    def _lent(self):
        connection = self._living()
        try:
            yield connection
        finally:
            if connection.info.transaction_status == psycopg.pq.TransactionStatus.IDLE:
                self._idle.append(connection)
            else:
                connection.close()
