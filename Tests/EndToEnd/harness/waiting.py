"""Waits for observable states, with a limit."""

import time


def wait_until(condition, what, seconds=15.0, pause=0.05):
    """The first true value of `condition()`; fails with `what` and the last value otherwise."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {seconds:g} s: {what} (last seen: {value!r})")
        time.sleep(pause)


def wait_for_value(read, expected, what, seconds=15.0):
    """Waits until `read()` gives `expected`; fails with its last value otherwise."""
    seen = None
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        seen = read()
        if seen == expected:
            return
        time.sleep(0.05)
    raise AssertionError(f"{what}: expected {expected!r}, still {seen!r} after {seconds:g} s")
