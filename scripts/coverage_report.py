"""Prints line and branch figures of a coverage file, and each place that is not reached with its reason.

usage: coverage_report.py COVERAGE.json

The reasons stand in tests/coverage.toml, and their places count as reached. The goals are all lines, 98 of 100
branches, and no reason without such a place.
"""

import json
import pathlib
import re
import sys
import tomllib

ROOT = pathlib.Path(__file__).resolve().parent.parent
WAIVERS = ROOT / "tests" / "coverage.toml"
BRANCHES = 98.0


def main():
    waivers = tomllib.loads(WAIVERS.read_text())["waiver"]
    lines = reached_lines = branches = reached_branches = 0
    open_lines, open_branches = [], []
    for source in json.loads(pathlib.Path(sys.argv[1]).read_text())["files"]:
        name = source["file"]
        text = (ROOT / name).read_text().splitlines()
        for line in source["lines"]:
            if line.get("gcovr/noncode"):
                continue
            code = text[line["line_number"] - 1].strip()
            matching = [w for w in waivers if name.endswith(w["file"]) and w["code"] in code]
            known = bool(matching)
            lines += 1
            reached_lines += line["count"] > 0 or known
            if line["count"] == 0:
                open_lines.append((known, name, line["line_number"], code))
            # Where the source decides nothing, the branches are the compiler's: of new, of delete, of clean-up.
            decides = re.search(r"\b(if|for|while|case|catch)\b|&&|\|\||\?", code)
            # Nor does it in the ways that exceptions take, one of every call: the exhaustion test takes them all.
            # Which they are is known only of code that has run, so of what is merged and not of each object.
            taken = [branch["count"] > 0 for branch in line.get("branches", []) if decides and not branch["throw"]]
            if line["count"] == 0 or not all(taken):
                for waiver in matching:
                    waiver["used"] = True
            branches += len(taken)
            reached_branches += len(taken) if known else sum(taken)
            if taken and not all(taken) and line["count"] > 0:
                open_branches.append((known, name, line["line_number"],
                                      f"{code}  ({taken.count(False)} of {len(taken)})"))
    for title, places in (("lines", open_lines), ("branches", open_branches)):
        for known, name, number, code in places:
            print(f"{title:8} {'explained' if known else 'untried  '} {name}:{number}: {code}")
    stale = [w for w in waivers if not w.get("used")]
    for waiver in stale:
        print(f"waiver   without such a place: {waiver['file']}: {waiver['code']}")
    percent = 100 * reached_branches / branches
    unexplained = sum(not known for known, *_ in open_lines)
    print(f"lines    {reached_lines} of {lines} ({100 * reached_lines / lines:.2f} %)")
    print(f"branches {reached_branches} of {branches} ({percent:.2f} %)")
    sys.exit(1 if unexplained or stale or percent < BRANCHES else 0)


if __name__ == "__main__":
    main()
