"""HTTP on 127.0.0.1."""

import json
import re
import socketserver
import sys
import threading
import time
import traceback
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

from .errors import ApiError

LARGEST_BODY = 1 << 20
# A body that is too large is read up to here and dropped, so that its sender can read the refusal.
LARGEST_SKIPPED = 8 << 20
MOST_THREADS = 400


class Handler(BaseHTTPRequestHandler):
    """One client, on a thread of its own, until it disconnects or sends nothing for longer than the time-out."""

    protocol_version = "HTTP/1.1"
    server_version, sys_version = "fernhollow-backend", ""
    disable_nagle_algorithm = True
    timeout = 60

    def do_POST(self):
        started = time.monotonic()
        try:
            answer = self.server.api.answer(self.command, self.path, self.headers, self._read_body())
        except ApiError as error:
            answer = error.status, json.dumps(error.content), None
        except OSError:  # the client has disconnected or sends nothing
            raise
        except Exception as error:  # its text is not printed, because it may contain what a client sent
            print(type(error).__name__, *traceback.format_tb(error.__traceback__), file=sys.stderr)
            answer = 500, '{"message":"Internal error"}', None
        if self.server.is_verbose:
            # A path that is not a plain name may contain anything, so it is not shown.
            path = self.path.partition("?")[0]
            shown = path if re.fullmatch("[a-z0-9_/]{1,100}", path) else "(another path)"
            took = (time.monotonic() - started) * 1000
            print(f"{self.command} {shown} {answer[0]} {took:.1f} ms", file=sys.stderr)
        self._send(*answer)

    do_GET = do_HEAD = do_PUT = do_PATCH = do_DELETE = do_OPTIONS = do_POST

    def _read_body(self):
        """The body. When its length is unclear, the next request's beginning is unknown, so the connection ends."""
        headers, lengths = self.headers, self.headers.get_all("Content-Length", ["0"])
        has_rest = headers.defects or headers.get_payload()  # a line without a colon ends the headers early
        if has_rest or "Transfer-Encoding" in headers or not re.fullmatch("[0-9]{1,18}", ",".join(lengths)):
            self.close_connection = True
            raise ApiError(400, "The length of the request is not clear")
        length = int(lengths[0])
        self.close_connection |= length > LARGEST_SKIPPED
        body = self.rfile.read(length) if length <= LARGEST_SKIPPED else b""
        if length > LARGEST_BODY:
            raise ApiError(413, "The request is too large")
        if len(body) < length:
            raise ConnectionError
        return body

    def _send(self, status, body, resolution=None):
        self.send_response(status)
        if body:
            self.send_header("Content-Type", "application/json; charset=utf-8")
        if status != 204:
            self.send_header("Content-Length", str(len(body.encode())))
        if status == 401:
            self.send_header("WWW-Authenticate", "Bearer")
        if resolution:
            self.send_header("Preference-Applied", f"resolution={resolution}")
        if self.close_connection:
            self.send_header("Connection", "close")
        self.end_headers()
        if self.command != "HEAD":
            self.wfile.write(body.encode())

    def send_error(self, code, message=None, explain=None):
        """Answers a request that the library itself refuses."""
        self.close_connection = True
        self._send(code, json.dumps({"message": message or "The request cannot be read"}))

    def log_message(self, *_):
        """Logs nothing, because the library's lines contain what clients sent."""


class Server(ThreadingHTTPServer):
    """Listens from its construction; `serve_forever` answers, each client on a thread."""

    allow_reuse_port = False  # two servers must not share one port
    request_queue_size = 128

    def __init__(self, port, api, is_verbose=False, handler=Handler):
        super().__init__(("127.0.0.1", port), handler)
        self.api = api
        self.is_verbose = is_verbose

    def server_bind(self):
        # The library would also look up the name of 127.0.0.1, and that request may leave this machine.
        socketserver.TCPServer.server_bind(self)
        self.server_port = self.server_address[1]

    def verify_request(self, request, client_address):
        return threading.active_count() < MOST_THREADS

    def handle_error(self, request, client_address):
        """Logs nothing: a client has disconnected, and the library would show its address."""
