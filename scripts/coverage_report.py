"""Prints how many lines and branches of the library proper were reached, and each place that was not, with its reason.

usage: coverage_report.py JSON LCOV FILES     two exports of llvm-cov; the library's list of files

Lines and branches are those of the source, as the compiler counts them; instances of a template count together. The
reasons are in tests/coverage.toml. A reason covers its line and the run of missed lines around it; these count as
reached. The goals are all lines, 98 of 100 branches, and no reason without a missed place.
"""

import collections
import json
import pathlib
import sys
import tomllib

ROOT = pathlib.Path(__file__).resolve().parent.parent
WAIVERS = ROOT / "tests" / "coverage.toml"
BRANCHES = 98.0


def name_of(path):
    return str(pathlib.Path(path).resolve().relative_to(ROOT))


def line_counts(lcov):
    """Yields a file, the number of a line and how often it ran."""
    file = None
    for record in pathlib.Path(lcov).read_text().splitlines():
        kind, _, rest = record.partition(":")
        if kind == "SF":
            file = name_of(rest)
        elif kind == "DA":
            number, count = rest.split(",")[:2]
            yield file, int(number), int(count)


def branch_counts(exported):
    """Yields a file, the number of a line and how often each of the two ways of a condition in it was taken."""
    for source in json.loads(pathlib.Path(exported).read_text())["data"][0]["files"]:
        ways = collections.defaultdict(lambda: [0, 0])
        for line, column, end_line, end_column, taken, not_taken, *_ in source["branches"]:
            both = ways[line, column, end_line, end_column]
            both[0] += taken
            both[1] += not_taken
        for (line, *_), both in ways.items():
            yield name_of(source["filename"]), line, both


def main():
    exported, lcov, files = sys.argv[1:]
    wanted = {line.split()[1] for line in pathlib.Path(files).read_text().splitlines()}
    waivers = tomllib.loads(WAIVERS.read_text())["waiver"]
    texts = {}

    def code_of(file, number):
        lines = texts.setdefault(file, (ROOT / file).read_text().splitlines())
        return lines[number - 1].strip()

    def explained(file, numbers):
        """Returns whether a waiver covers one of the lines, and marks it as used."""
        matching = [w for w in waivers if file.endswith(w["file"])
                    and any(w["code"] in code_of(file, number) for number in numbers)]
        for waiver in matching:
            waiver["used"] = True
        return bool(matching)

    totals = {}
    for title, ways in (("lines", [(f, n, [count]) for f, n, count in line_counts(lcov)]),
                        ("branches", list(branch_counts(exported)))):
        ways = sorted(way for way in ways if way[0] in wanted)
        total = reached = sum(len(counts) for *_, counts in ways)
        runs = []  # a file, a run of missed lines, the number of misses
        for file, number, counts in ways:
            missed = counts.count(0)
            if not missed:
                continue
            if runs and runs[-1][0] == file and number - runs[-1][1][-1] <= 1:
                runs[-1][1].append(number)
                runs[-1][2] += missed
            else:
                runs.append([file, [number], missed])
        for file, numbers, missed in runs:
            known = explained(file, numbers)
            reached -= 0 if known else missed
            for number in dict.fromkeys(numbers):
                print(f"{title:8} {'explained' if known else 'missed   '} {file}:{number}: {code_of(file, number)}")
        totals[title] = reached, total

    stale = [w for w in waivers if not w.get("used")]
    for waiver in stale:
        print(f"waiver   without a missed place: {waiver['file']}: {waiver['code']}")
    for title, (reached, total) in totals.items():
        print(f"{title:8} {reached} of {total} ({100 * reached / total:.2f} %)")
    lines, branches = totals["lines"], totals["branches"]
    sys.exit(1 if lines[0] < lines[1] or stale or 100 * branches[0] / branches[1] < BRANCHES else 0)


if __name__ == "__main__":
    main()
