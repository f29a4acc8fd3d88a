#!/usr/bin/env python3
"""What data frames do, measured as the benchmarks measure the library.

usage: frames.py NAME/frame/SIZE

Prints what a benchmark run prints: the figures of one run, in nanoseconds, as JSON. The interpreter is the
system's own, whose packages scripts/setup installs.
"""

import json
import random
import sys
import time

import numpy
import pandas


def window_of(outer):
    """Cuts windows of 40 x 15 out of 1,000 * outer rows and 1,000 columns of one-byte integers."""
    rows = pandas.MultiIndex.from_product([[f"c{i}" for i in range(outer)], [f"c{i}" for i in range(1000)]])
    columns = pandas.MultiIndex.from_product([[f"c{i}" for i in range(40)], [f"c{i}" for i in range(25)]])
    cells = numpy.zeros((len(rows), len(columns)), dtype=numpy.int8)
    draw = numpy.random.default_rng(1)
    cells[draw.integers(len(rows), size=len(rows)), draw.integers(len(columns), size=len(rows))] = 1
    frame = pandas.DataFrame(cells, index=rows, columns=columns)
    times = 2000
    random.seed(3)
    places = [(random.randrange(len(rows) - 40), random.randrange(len(columns) - 15)) for _ in range(times)]
    start = time.thread_time()
    shown = 0
    for row, column in places:
        shown += frame.iloc[row:row + 40, column:column + 15].size
    assert shown == times * 600
    return {"window": (time.thread_time() - start) * 1e9 / times}


def main():
    name, _, size = sys.argv[1].split("/")
    figures = {"Window": window_of}[name](int(size))
    print(json.dumps({"benchmarks": [figures]}))


if __name__ == "__main__":
    main()
