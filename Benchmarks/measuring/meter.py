"""The CPU time, wake-ups and memory of a running process, as the kernel counts them."""

import dataclasses
import pathlib
import re
import time


@dataclasses.dataclass
class Usage:
    cpu: float  # seconds, user and system, of all its threads
    wake_ups: int  # how often one of its threads continued after a wait

    def __sub__(self, earlier):
        return Usage(self.cpu - earlier.cpu, self.wake_ups - earlier.wake_ups)


def usage(pid):
    # The kernel's clock for the CPU time of that process. It is exact; /proc/PID/stat counts in steps of 10
    # ms.
    cpu = time.clock_gettime((~pid << 3) | 2)
    wake_ups = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        status = (task / "status").read_text()
        wake_ups += int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", status, re.MULTILINE)[1])
    return Usage(cpu, wake_ups)


@dataclasses.dataclass
class Memory:
    resident: float  # MB; including pages of files and libraries that other processes use as well
    proportional: float  # MB; the same with shared pages divided by the number of their users
    private: float  # MB; pages that only this process uses and has written to


def memory(pid):
    rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()

    def megabytes(field):
        return int(re.search(rf"^{field}:\s*(\d+) kB", rollup, re.MULTILINE)[1]) / 1024

    return Memory(megabytes("Rss"), megabytes("Pss"), megabytes("Private_Dirty"))
