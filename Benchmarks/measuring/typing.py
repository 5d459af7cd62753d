"""Typing with the dashboard open: 50 presses a second, 40 applications, 30 days of history."""

import contextlib
import datetime
import json
import subprocess
import time

from harness.backend import Backend
from history import History

from .figures import Figure, Samples, at_most
from .meter import usage
from .presses import DRAINING, Typist
from .stage import SETTLING, uploaded

PER_SECOND = 50
APPLICATIONS = 40


def _share(person, backend, shows_window, seconds):
    """The program's CPU time in percent of a core."""
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
    return figures + _redraws(stage)


def _redraws(stage):
    """The main thread's CPU time for a redraw of the dashboard with 25 applications."""
    done = subprocess.run(
        [stage.tool("dashboard_benchmark"), "--benchmark_format=json", "--benchmark_repetitions=5"],
        env=stage.desktop.environment,
        check=True,
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        timeout=300,
        text=True,
    )
    runs = [run for run in json.loads(done.stdout)["benchmarks"] if run["run_type"] == "iteration"]

    def samples(name):
        return Samples("ms", [run["real_time"] for run in runs if run["run_name"].startswith(name)])

    return [
        Figure("redraw of the dashboard after a press", samples("afterAPress"), None, at_most(4, "ms")),
        Figure("redraw after another history", samples("afterAnotherHistory"), None, at_most(4, "ms")),
    ]
