"""Typing with the dashboard open: 50 presses a second, 40 applications, 30 days of history."""

import contextlib
import datetime
import time

from harness.backend import Backend
from harness.history import History

from .figures import Figure, Samples, at_most
from .meter import usage
from .presses import DRAINING, Typist
from .stage import SETTLING, uploaded

PER_SECOND = 50
APPLICATIONS = 40


def _share(person, backend, shows_window, seconds):
    """Percent of a core."""
    with person.program() as process:
        if backend:
            uploaded(person)
        if shows_window:
            person.toggle_window()
        time.sleep(SETTLING)
        with Typist(person.stage) as typist:
            typist.press(PER_SECOND, PER_SECOND)
            before, begin = usage(process.pid), time.monotonic()
            typist.press(int(PER_SECOND * seconds), PER_SECOND)
            time.sleep(DRAINING)
            return (usage(process.pid) - before).cpu / (time.monotonic() - begin) * 100


def measure(stage, seconds):
    history = History(datetime.date.today().isoformat(), applications=APPLICATIONS)

    def share(backend, shows_window):
        person = stage.person(signed_in=True, backend_port=backend.port if backend else 0)
        history.replace(person.database)
        return Samples("% of a core", [_share(person, backend, shows_window, seconds)])

    with contextlib.closing(Backend().start()) as backend:
        figures = [
            Figure("typing, no window, no backend: CPU", share(None, False), None),
            Figure("typing, dashboard open, no backend: CPU", share(None, True), None, at_most(5, "% of a core")),
            Figure("typing, no window: CPU", share(backend, False), None),
            Figure("typing, dashboard open: CPU", share(backend, True), None, at_most(5, "% of a core")),
        ]
    return figures
