"""A wall clock that shows the time that a test sets; timers are not affected."""

import datetime
import os
import struct
import zoneinfo


class FakedClock:
    """The clock of programs that are started with environment(); it stands still between two calls of set()."""

    def __init__(self, path, time_zone="Europe/Berlin"):
        self._path = path
        self._zone = zoneinfo.ZoneInfo(time_zone)
        self._library = os.environ.get("FERNHOLLOW_FAKED_CLOCK", "")
        if not os.path.exists(self._library):
            raise AssertionError(f"FERNHOLLOW_FAKED_CLOCK is not the clock's library: {self._library!r}")

    def set(self, local_time):
        """`local_time` as "2026-03-10 13:59:40"."""
        moment = datetime.datetime.fromisoformat(local_time).replace(tzinfo=self._zone)
        # One write of eight bytes, so that no program reads half of it.
        file = os.open(self._path, os.O_WRONLY | os.O_CREAT | os.O_CLOEXEC, 0o600)
        os.pwrite(file, struct.pack("=q", int(moment.timestamp())), 0)
        os.close(file)

    @property
    def library(self):
        """The library that a program has to preload to see this clock."""
        return self._library

    def environment(self):
        return {"FAKED_CLOCK": str(self._path)}
