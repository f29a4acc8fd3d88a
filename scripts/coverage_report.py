"""Prints line and branch figures of a coverage file, and each place that is not reached with its reason.

usage: coverage_report.py COVERAGE.json

A reason stands in docs/reliability.md under "What no test reaches", as "- `file`: `code`", and the place then
counts as reached. The goals are all lines, and 98 of 100 branches.
"""

import json
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "reliability.md"
BRANCHES = 98.0


def main():
    reasons = re.findall(r"^- `([^`]+)`: `([^`]+)`", PAGE.read_text(), re.M) if PAGE.exists() else []
    lines = reached_lines = branches = reached_branches = 0
    open_lines, open_branches = [], []
    for source in json.loads(pathlib.Path(sys.argv[1]).read_text())["files"]:
        name = source["file"]
        text = (ROOT / name).read_text().splitlines()
        for line in source["lines"]:
            if line.get("gcovr/noncode"):
                continue
            code = text[line["line_number"] - 1].strip()
            known = any(name.endswith(file) and part in code for file, part in reasons)
            lines += 1
            reached_lines += line["count"] > 0 or known
            if line["count"] == 0:
                open_lines.append((known, name, line["line_number"], code))
            # Where the source decides nothing, the branches are the compiler's: of new, of delete, of clean-up.
            decides = re.search(r"\b(if|for|while|case|catch)\b|&&|\|\||\?", code)
            # Nor does it in the ways that exceptions take, one of every call: the exhaustion test takes them all.
            # Which they are is known only of code that has run, so of what is merged and not of each object.
            taken = [branch["count"] > 0 for branch in line.get("branches", []) if decides and not branch["throw"]]
            branches += len(taken)
            reached_branches += len(taken) if known else sum(taken)
            if taken and not all(taken) and line["count"] > 0:
                open_branches.append((known, name, line["line_number"],
                                      f"{code}  ({taken.count(False)} of {len(taken)})"))
    for title, places in (("lines", open_lines), ("branches", open_branches)):
        for known, name, number, code in places:
            print(f"{title:8} {'explained' if known else 'untried  '} {name}:{number}: {code}")
    percent = 100 * reached_branches / branches
    unexplained = sum(not known for known, *_ in open_lines)
    print(f"lines    {reached_lines} of {lines} ({100 * reached_lines / lines:.2f} %)")
    print(f"branches {reached_branches} of {branches} ({percent:.2f} %)")
    sys.exit(1 if unexplained or percent < BRANCHES else 0)


if __name__ == "__main__":
    main()
