"""What a running process has used, as the kernel counts it."""

import dataclasses
import pathlib
import re
import time


@dataclasses.dataclass
class Usage:
    cpu: float  # seconds, user and system, of all its threads
    wake_ups: int  # times that one of its threads had waited and went on

    def __sub__(self, earlier):
        return Usage(self.cpu - earlier.cpu, self.wake_ups - earlier.wake_ups)


def usage(pid):
    # The kernel's number for "CPU time of that process": exact, where /proc/PID/stat counts in 10 ms.
    cpu = time.clock_gettime((~pid << 3) | 2)
    wake_ups = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        status = (task / "status").read_text()
        wake_ups += int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", status, re.MULTILINE)[1])
    return Usage(cpu, wake_ups)


@dataclasses.dataclass
class Memory:
    resident: float  # MB; with the pages of files and of libraries that others use as well
    proportional: float  # MB; those divided by the number of their users
    private: float  # MB; written to, nobody else's


def memory(pid):
    rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()

    def megabytes(field):
        return int(re.search(rf"^{field}:\s*(\d+) kB", rollup, re.MULTILINE)[1]) / 1024

    return Memory(megabytes("Rss"), megabytes("Pss"), megabytes("Private_Dirty"))
