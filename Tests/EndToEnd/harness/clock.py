"""A wall clock that stands, or runs on from, where a test puts it; timers only notice a skip."""

import datetime
import os
import struct
import time
import zoneinfo

SECOND = 10**9


class FakedClock:
    """Shown to the programs that are started with environment(); set() lets it stand still, start() run."""

    def __init__(self, path, time_zone="Europe/Berlin"):
        self._path = path
        self._zone = zoneinfo.ZoneInfo(time_zone)
        self._library = os.environ.get("FERNHOLLOW_FAKED_CLOCK", "")
        self._wall = self._skipped = 0
        if not os.path.exists(self._library):
            raise AssertionError(f"FERNHOLLOW_FAKED_CLOCK is not the clock's library: {self._library!r}")

    def set(self, local_time):
        """`local_time` as "2026-03-10 13:59:40"."""
        self._wall = self._seconds(local_time)
        self._write()

    def start(self, local_time):
        """It is `local_time` now, and time passes."""
        self._wall = self._seconds(local_time) * SECOND - time.clock_gettime_ns(time.CLOCK_MONOTONIC)
        self._write()

    def skip(self, seconds):
        """For the program, so much time passes at once: a clock that runs, idleness and timers see it."""
        self._wall += seconds * SECOND
        self._skipped += seconds * SECOND
        self._write()

    def _seconds(self, local_time):
        moment = datetime.datetime.fromisoformat(local_time).replace(tzinfo=self._zone)
        return int(moment.timestamp())

    def _write(self):
        file = os.open(self._path, os.O_WRONLY | os.O_CREAT | os.O_CLOEXEC, 0o600)
        for place, value in enumerate((self._wall, self._skipped)):
            os.pwrite(file, struct.pack("=q", value), 8 * place)  # one write each: half of it is never read
        os.close(file)

    @property
    def library(self):
        """The library that a program has to preload to see this clock."""
        return self._library

    def environment(self):
        return {"FAKED_CLOCK": str(self._path)}
