"""What goes over the wire: requests and bytes of a start, of an idle minute, and while somebody types."""

import contextlib
import datetime
import re
import socket
import threading
import time

from harness.backend import Backend
from harness.clock import FakedClock

from .figures import Figure, Samples
from .meter import usage
from .presses import Typist
from .stage import SETTLING, uploaded

START = 60  # seconds
QUARTER_OF_AN_HOUR = 15 * 60
PRESSES = 300
PER_SECOND = 5


class CountingProxy:
    """A proxy in front of the backend that counts the bytes that pass, with headers and without TCP's overhead."""

    def __init__(self, backend_port):
        self._backend_port = backend_port
        self._socket = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.port = self._socket.getsockname()[1]
        self.requests = self.sent = self.received = 0
        threading.Thread(target=self._accept, daemon=True).start()

    def count(self):
        return self.requests, self.sent, self.received

    def close(self):
        self._socket.close()

    def _accept(self):
        while True:
            try:
                client, _ = self._socket.accept()
            except OSError:
                return
            backend = socket.create_connection(("127.0.0.1", self._backend_port))
            for ends, counted in (((client, backend), self._asked), ((backend, client), self._answered)):
                threading.Thread(target=self._carry, args=(*ends, counted), daemon=True).start()

    def _carry(self, source, target, counted):
        with contextlib.suppress(OSError):
            while data := source.recv(65536):
                counted(data)
                target.sendall(data)
            target.shutdown(socket.SHUT_WR)

    def _asked(self, data):
        self.sent += len(data)
        self.requests += len(re.findall(rb"^(?:POST|GET) /rest", data, re.MULTILINE))

    def _answered(self, data):
        self.received += len(data)


def measure(stage, seconds):
    clock = FakedClock(stage.desktop.folder / "clock")
    clock.start(datetime.datetime.now().replace(hour=12, minute=0).isoformat())
    with contextlib.ExitStack() as stack:
        backend = stack.enter_context(contextlib.closing(Backend().start()))
        proxy = stack.enter_context(contextlib.closing(CountingProxy(backend.port)))
        person = stage.person(signed_in=True, backend_port=proxy.port, clock=clock)
        with person.program():
            uploaded(person)
            time.sleep(SETTLING)
        figures = _figures("a start with 30 days to send", (0, 0, 0), proxy.count())
        before, begin = proxy.count(), time.monotonic()
        process = stack.enter_context(person.program())
        uploaded(person)
        time.sleep(max(0, begin + START - time.monotonic()))
        figures += _figures("a start with nothing to send, a minute at least", before, proxy.count())
        clock.skip(QUARTER_OF_AN_HOUR)
        time.sleep(SETTLING)
        before = proxy.count()
        time.sleep(seconds)
        figures += _figures("an idle minute", before, proxy.count(), 60 / seconds)
        typist = stack.enter_context(Typist(stage))
        before, used = proxy.count(), usage(process.pid)
        typist.press(PRESSES, PER_SECOND)
        figures += _figures("a minute of typing, 5 presses a second", before, proxy.count())
        cpu = (usage(process.pid) - used).cpu
        share = Samples("% of a core", [cpu / (PRESSES / PER_SECOND) * 100])
        return [*figures, Figure("a minute of typing, 5 presses a second, local backend: CPU", share)]


def _figures(what, before, after, scale=1):
    requests, sent, received = ((late - early) * scale for early, late in zip(before, after, strict=True))
    if requests == 0:
        raise AssertionError(f"no request was seen: {what}")
    return [
        Figure(f"{what}: requests", Samples("", [requests])),
        Figure(f"{what}: sent", Samples("kB", [sent / 1000])),
        Figure(f"{what}: received", Samples("kB", [received / 1000])),
    ]
