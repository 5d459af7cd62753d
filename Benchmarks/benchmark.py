"""Measures Fernhollow against floors in the same run and prints a table. See README.md."""

import argparse
import datetime
import os
import pathlib
import platform
import re
import subprocess
import sys

from measuring import footprint, idle, presses, store, traffic, typing
from measuring.figures import table
from measuring.stage import TOP, Stage

PARTS = {
    "press": lambda stage, options: presses.measure(stage, options.runs),
    "idle": lambda stage, options: idle.measure(stage, options.seconds),
    "typing": lambda stage, options: typing.measure(stage, options.seconds / 2),
    "traffic": lambda stage, options: traffic.measure(stage, options.seconds),
    "memory": lambda stage, options: footprint.measure_memory(stage, options.runs),
    "start": lambda stage, options: footprint.measure_start(stage),
    "store": lambda stage, options: store.measure(stage, options.runs * 10),
}


def machine():
    cpu = re.search(r"^model name\s*:\s*(.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.MULTILINE)
    commit = _git("rev-parse", "--short", "HEAD").stdout.strip() or "unknown"
    if _git("diff", "--quiet", "HEAD", "--", "Sources", "Benchmarks").returncode != 0:
        commit += " with changes"
    system = platform.freedesktop_os_release()["PRETTY_NAME"]
    return (
        f"{datetime.date.today()}, commit {commit}; {cpu[1] if cpu else platform.machine()}, "
        f"{os.cpu_count()} cores; Linux {platform.release()}, {system}"
    )


def _git(*arguments):
    return subprocess.run(["git", "-C", TOP, *arguments], capture_output=True, text=True, check=False)


def parse():
    parser = argparse.ArgumentParser(prog="scripts/benchmark", description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, default=TOP / "build" / "benchmark")
    parser.add_argument("--only", nargs="+", choices=PARTS, default=list(PARTS), metavar="PART",
                        help=", ".join(PARTS))  # fmt: skip
    parser.add_argument("--runs", type=int, default=3, help="of each short measurement (default: 3)")
    parser.add_argument("--seconds", type=float, default=60, help="of idleness (default: 60)")
    parser.add_argument("--set", nargs="+", default=[], metavar="NAME=VALUE", dest="changes",
                        help="environment variables of the program, not of the floors")  # fmt: skip
    parser.add_argument("--markdown", action="store_true", help="print the table for Performance.md")
    return parser.parse_args()


def main():
    options = parse()
    changes = dict(change.split("=", 1) for change in options.changes)
    figures = []
    measured = machine()  # now, because the commit may change during the run
    for part in options.only:
        print(f"measuring: {part}", file=sys.stderr)
        # TimeStart, which measures a start, is a tray itself.
        with Stage(options.build.absolute(), changes, tray=part != "start") as stage:
            figures += PARTS[part](stage, options)
    print(measured)
    print()
    print(table(figures, options.markdown))


if __name__ == "__main__":
    main()
