"""Measures each operation of the store and its bare statement."""

import collections
import json
import statistics
import subprocess

from .figures import Figure, Samples, times
from .stage import make_history


def measure(stage, repetitions):
    database = stage.desktop.folder / "store.sqlite"
    first, last = make_history(stage, database)
    done = subprocess.run(
        [
            stage.tool("store_benchmark"),
            str(database),
            first,
            last,
            "--benchmark_format=json",
            f"--benchmark_repetitions={repetitions}",
            "--benchmark_enable_random_interleaving=true",
        ],
        env=stage.desktop.environment,
        check=True,
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        timeout=300,
        text=True,
    )
    # CPU time of all threads, because wall time says more about the machine's other users.
    measured = collections.defaultdict(list)
    for run in json.loads(done.stdout)["benchmarks"]:
        if run["run_type"] == "iteration":
            name = run["run_name"].partition("/iterations:")[0]
            measured[name].append(run["cpu_time"])
    work = statistics.median(measured.pop("hop/direct"))
    for way in ("hop/bare", "hop/awaited"):
        measured[way] = [value - work for value in measured[way]]
    samples = {name: Samples("µs", values) for name, values in measured.items()}

    hop = samples.pop("hop/awaited")
    figures = [Figure("store: a hop to the actor and back", hop, samples.pop("hop/bare"))]
    for name in sorted({name.partition("/")[0] for name in samples}):
        for way, floor in (("direct", "bare"), ("awaited", "bare-awaited")):
            measured, bare = samples[f"{name}/{way}"], samples[f"{name}/{floor}"]
            figures.append(Figure(f"store: {name}, {way}", measured, bare, times(1.3)))
    return figures
