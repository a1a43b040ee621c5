#!/usr/bin/env python3
"""What `track()` adds to an item of a loop when nothing is due, beside tqdm (python3-tqdm) in the same run.

usage: bench_track.py [ITEMS]     on a display, with progressd in PATH

Prints nanoseconds an item beyond the bare loop: the median of the rounds, in which the three take turns.
"""

import os
import statistics
import sys
import time
from typing import Iterable

from tqdm import tqdm

from progressclient import Progress, track

ROUNDS = 7


def seconds(items: Iterable[int]) -> float:
    begin = time.perf_counter()
    for _ in items:
        pass
    return time.perf_counter() - begin


def main() -> None:
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 3_000_000
    with Progress("Bench", learn=""), open(os.devnull, "w") as nowhere:
        loops = {
            "bare": lambda: range(count),
            "track": lambda: track(range(count), "Counting"),
            "tqdm": lambda: tqdm(range(count), file=nowhere),
        }
        times: dict[str, list[float]] = {name: [] for name in loops}
        for _ in range(ROUNDS):
            for name, loop in loops.items():
                times[name].append(seconds(loop()))
    bare = statistics.median(times.pop("bare"))
    for name, measured in times.items():
        print(f"{name:6} {(statistics.median(measured) - bare) / count * 1e9:6.0f} ns an item")


if __name__ == "__main__":
    main()
