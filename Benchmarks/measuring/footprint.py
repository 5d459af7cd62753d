"""Memory, and the time that a start takes."""

import subprocess
import time

from .figures import Figure, Samples, times
from .meter import memory
from .stage import SETTLING

# Seconds that the program waits, by design, before it shows a status item.
START_DELAY = 100
STARTS = 11


def _of_floor(stage, *arguments):
    with stage.floor("bare_tray", *arguments) as process:
        time.sleep(SETTLING)
        return memory(process.pid)


def _of_program(stage, person):
    with person.program() as process:
        at_start = memory(process.pid)
        person.toggle_window()
        time.sleep(1.5)
        if not stage.desktop.window_titled("Fernhollow"):
            raise AssertionError("the main window did not open")
        person.toggle_window()
        time.sleep(1)
        return at_start, memory(process.pid)


def measure_memory(stage, runs):
    person = stage.person(signed_in=True)
    trays, windows, starts, closed = [], [], [], []
    for _ in range(runs):
        trays.append(_of_floor(stage))
        windows.append(_of_floor(stage, "--window"))
        at_start, after_window = _of_program(stage, person)
        starts.append(at_start)
        closed.append(after_window)

    def figures(field, name, at_start_budget=None, after_window_budget=None):
        def samples(measured):
            return Samples("MB", [getattr(each, field) for each in measured])

        return [
            Figure(f"{name} at start", samples(starts), samples(trays), at_start_budget),
            Figure(f"{name} after the main window", samples(closed), samples(trays), after_window_budget),
            Figure(f"{name}, floor with a window too", samples(closed), samples(windows)),
        ]

    return (
        figures("resident", "resident memory", times(1.6), times(2.2))
        + figures("proportional", "proportional memory")
        + figures("private", "private memory")
    )


def measure_start(stage):
    person = stage.person(signed_in=True)

    def milliseconds(program, environment):
        done = subprocess.run(
            [stage.tool("time_start"), stage.tool(program)],
            env=environment,
            check=True,
            capture_output=True,
            text=True,
            timeout=60,
        )
        return float(done.stdout.splitlines()[-1])

    floors, programs = [], []
    for _ in range(STARTS + 1):
        floors.append(milliseconds("bare_tray", stage.desktop.environment))
        programs.append(milliseconds("fernhollow", person.environment) - START_DELAY)
    # The first of each is left out, because it warmed the machine's caches.
    return [
        Figure("start to status item", Samples("ms", programs[1:]), Samples("ms", floors[1:]), times(2))
    ]
