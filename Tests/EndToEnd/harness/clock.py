"""A wall clock that stands where a test puts it; timers are not touched."""

import datetime
import glob
import os
import zoneinfo


class FakedClock:
    """Shown to the programs that are started with environment(); stands still between two set()."""

    def __init__(self, path, time_zone="Europe/Berlin"):
        self._path = path
        self._zone = zoneinfo.ZoneInfo(time_zone)
        self._library = sorted(glob.glob("/usr/lib/*/faketime/libfaketimeMT.so.1"))

    def set(self, local_time):
        """`local_time` as "2026-03-10 13:59:40"."""
        fresh = f"{self._path}.new"
        with open(fresh, "w", encoding="ascii") as file:
            file.write(local_time + "\n")
        os.replace(fresh, self._path)

    def seconds(self, local_time):
        """Unix time of a local time."""
        return int(datetime.datetime.fromisoformat(local_time).replace(tzinfo=self._zone).timestamp())

    def environment(self):
        if not self._library:
            raise AssertionError("libfaketime is not installed")
        return {
            "LD_PRELOAD": self._library[0],
            "FAKETIME_TIMESTAMP_FILE": str(self._path),
            "FAKETIME_NO_CACHE": "1",
            "FAKETIME_DONT_FAKE_MONOTONIC": "1",
            "NO_FAKE_STAT": "1",
        }
