#!/usr/bin/env python3
"""Writes a data set of any size in the proportions of a small one, to the standard output.

usage: benchmarks/enlarge.py SOURCE.csv ROWS

Every row is one of the source's, drawn at random with a fixed seed, so that all that depends on several
variables at once keeps its proportions too.
"""

import csv
import random
import sys


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    with open(sys.argv[1], encoding="utf-8", newline="") as source:
        heading, *rows = csv.reader(source)
    writer = csv.writer(sys.stdout, lineterminator="\n")
    writer.writerow(heading)
    writer.writerows(random.Random(1).choices(rows, k=int(sys.argv[2])))


if __name__ == "__main__":
    main()
