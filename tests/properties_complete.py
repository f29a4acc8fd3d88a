"""Fails where a property of a public class is missing from the lists of PropertiesTest.cpp.

usage: properties_complete.py LIBRARY... HEADERS TEST

What the libraries export, and the inline functions of all headers, which the compiler was told to keep in
the object HEADERS, has to be called by the object TEST: what sets or adds something, what has one
argument and the name of what has none, and in the classes of those all that can be asked.
"""

import re
import subprocess
import sys

# What can be asked of a class and is no property of it, what sets something for others, and containers.
LEFT_OUT = re.compile(r"::(NDimensions|SizeVector|getNumCells|StoredCells|FirstCell|Print|Kind|setHelper|Region)\(|::Data::|^std::"
                      r"|^Om(\w*Vector|VectorTreeData|Dimension|Composite)\b")
MEMBER = re.compile(r"(?P<owner>.*)::(?P<name>\w+)\((?P<arguments>.*)\)(?P<constant> const)?$")


def members(path, kinds, *options):
    """The demangled member functions among the symbols of a file whose kind is one of `kinds`."""
    output = subprocess.run(["nm", "-C", *options, path], check=True, capture_output=True, text=True).stdout
    names = re.findall(rf"^[0-9a-f ]*[{kinds}] (.*)$", output.replace("[abi:cxx11]", ""), re.M)
    return {name: MEMBER.match(name) for name in names if MEMBER.match(name) and not LEFT_OUT.search(name)}


def main():
    *libraries, headers, test = sys.argv[1:]
    offered = members(headers, "TW", "--defined-only")
    for library in libraries:
        offered |= members(library, "TW", "-D", "--defined-only")
    without = {(m["owner"], m["name"]) for m in offered.values() if not m["arguments"] and m["constant"]}
    setters = {name: m for name, m in offered.items() if not m["constant"] and (
        re.match("([sS]et|add)[A-Z]", m["name"]) or
        (m["owner"], m["name"]) in without and m["arguments"].count(",") == 0)}
    owners = {m["owner"] for m in setters.values()}
    getters = {name for name, m in offered.items() if m["owner"] in owners and not m["arguments"] and m["constant"]}
    missing = sorted((setters.keys() | getters) - members(test, "UW").keys())
    for name in missing:
        print(f"not in the lists: {name}")
    print(f"{len(setters)} setters, {len(getters)} getters, {len(missing)} missing")
    sys.exit(1 if missing or len(setters) < 100 else 0)


if __name__ == "__main__":
    main()
