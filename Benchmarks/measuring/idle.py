"""An idle minute, a quarter of an hour after the last press."""

import contextlib
import datetime
import time

from harness.backend import Backend
from harness.clock import FakedClock

from .figures import Figure, Samples, at_most, times
from .meter import usage
from .stage import SETTLING, make_history, uploaded

QUARTER_OF_AN_HOUR = 15 * 60


def measure(stage, seconds):
    """Measures all four at once: they sleep nearly always, and this way the machine's noise affects all alike."""
    database = stage.desktop.folder / "refreshed.sqlite"
    first, last = make_history(stage, database)
    clock = FakedClock(stage.desktop.folder / "clock")
    clock.start(datetime.datetime.now().replace(hour=12, minute=0).isoformat())
    with contextlib.ExitStack() as stack:
        backend = stack.enter_context(contextlib.closing(Backend().start()))
        tray = stack.enter_context(stage.floor("bare_tray"))
        signed_out = stack.enter_context(stage.person(signed_in=False).program())
        person = stage.person(signed_in=True, backend_port=backend.port, clock=clock)
        signed_in = stack.enter_context(person.program())
        uploaded(person)
        refresh = stack.enter_context(stage.floor("bare_refresh", database, first, last, backend.port))
        clock.skip(QUARTER_OF_AN_HOUR)
        time.sleep(SETTLING)
        watched = [tray, refresh, signed_out, signed_in]
        begin = time.monotonic()
        before = [usage(process.pid) for process in watched]
        time.sleep(seconds)
        used = [usage(process.pid) - start for process, start in zip(watched, before, strict=True)]
        to_a_minute = 60 / (time.monotonic() - begin)

    cpu = [Samples("ms", [each.cpu * 1000 * to_a_minute]) for each in used]
    wake_ups = [Samples("", [each.wake_ups * to_a_minute]) for each in used]
    share = Samples("% of a core", [cpu[3].median / 600])
    return [
        Figure("an idle minute, signed out: CPU", cpu[2], cpu[0], at_most(60, "ms")),
        Figure("an idle minute, signed out: wake-ups", wake_ups[2], wake_ups[0], at_most(150)),
        Figure("an idle minute, signed in: CPU", cpu[3], cpu[1], times(2)),
        Figure("an idle minute, signed in: CPU", share, None, at_most(1, "% of a core")),
        Figure("an idle minute, signed in: wake-ups", wake_ups[3], wake_ups[1]),
    ]
