"""One press, from the X server to the hourly table."""

import subprocess
import time

from .figures import Figure, Samples, times
from .meter import usage
from .stage import make_history

PER_SECOND = 200
PRESSES = 2000
# Seconds after which the last press has reached the table.
DRAINING = 0.3


class Typist:
    """PressKeys: a window with the keyboard, which presses keys."""

    def __init__(self, stage):
        # It ends when its input ends, at the latest with this process.
        self._process = subprocess.Popen(
            [stage.tool("press_keys")],
            env=stage.desktop.environment,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )
        self._expect("ready")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.communicate()

    def press(self, count, per_second):
        self._process.stdin.write(f"{count} {per_second}\n")
        self._process.stdin.flush()
        self._expect("done")

    def _expect(self, word):
        said = self._process.stdout.readline().strip()
        if said != word:
            raise AssertionError(f"press_keys said {said!r} instead of {word!r}")


def _per_press(process, typist):
    typist.press(100, PER_SECOND)
    time.sleep(DRAINING)
    before = usage(process.pid)
    typist.press(PRESSES, PER_SECOND)
    time.sleep(DRAINING)
    used = usage(process.pid) - before
    return used.cpu / PRESSES * 1e6, used.wake_ups / PRESSES


def _of_program(person, typist):
    before = person.pressed()
    with person.program() as process:
        result = _per_press(process, typist)
    if person.pressed() - before != PRESSES + 100:
        raise AssertionError(f"the program wrote {person.pressed() - before} presses, not {PRESSES + 100}")
    return result


def _of_floor(stage, typist, database, day):
    with stage.floor("bare_press", database, day, stdout=subprocess.PIPE, text=True) as process:
        if process.stdout.readline().strip() != "recording":
            raise AssertionError("bare_press does not record")
        result = _per_press(process, typist)
        process.terminate()
        written = int(process.stdout.readline())
        if written != PRESSES + 100:
            raise AssertionError(f"bare_press wrote {written} presses, not {PRESSES + 100}")
    return result


def measure(stage, runs):
    person = stage.person(signed_in=True)
    database = stage.desktop.folder / "floor.sqlite"
    _, day = make_history(stage, database)
    floors, programs = [], []
    with Typist(stage) as typist:
        for _ in range(runs):
            floors.append(_of_floor(stage, typist, database, day))
            programs.append(_of_program(person, typist))

    def samples(unit, results, field):
        return Samples(unit, [result[field] for result in results])

    return [
        Figure("a press: CPU", samples("µs", programs, 0), samples("µs", floors, 0), times(2)),
        Figure("a press: wake-ups", samples("", programs, 1), samples("", floors, 1)),
    ]
