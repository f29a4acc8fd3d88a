"""Fails where a public operation of the libraries is missing from the table of operations.

usage: complete.py LIBRARY... OBJECT...

What the libraries export, and what Census.cpp holds of the templates, has to be called by an object of the
table. Left out are destructors, which every fixture calls, what takes a private record, which no caller
can make, what no caller may call, and the region, which the test program brings itself.
"""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
LEFT_OUT = re.compile(r"~|::Data|operator delete|^(\S+ )*std::|^OmMemoryRegion::"
                      # Not public, though another overload is.
                      r"|::operator new\(unsigned long, OmMemoryRegion\*, unsigned long\)"
                      r"|::OmFootnote\(.*, int\)"
                      r"|^(Om\w*(Cell|CellUTF8|Composite|Number|Value|Variable))::\2\(\2 const&, OmMemoryRegion\*\)"
                      # Of vectors of characters alone, which clang 14 overlooks in an instance.
                      r"|OmFootnote>::OmVector\(char const\*")


def symbols(path, kinds, *options):
    """The demangled symbols of a file whose kind is one of `kinds`."""
    output = subprocess.run(["nm", "-C", *options, path], check=True, capture_output=True, text=True).stdout
    found = re.findall(rf"^[0-9a-f ]*[{kinds}] (.*)$", output, re.M)
    return {name.replace("[abi:cxx11]", "") for name in found}


def hidden():
    """The names that headers declare in private or protected sections alone."""
    public, others = set(), set()
    for header in [header for top in ("backend", "platform", "display") for header in ROOT.glob(f"{top}/**/*.h")]:
        text = re.sub(r".*= delete;", "", header.read_text())
        for body in re.findall(r"^(?:class|struct) .*?^};", text, re.M | re.S):
            for access, section in re.findall(r"^ (\w+):$(.*?)(?=^ \w+:$|^};)", body, re.M | re.S):
                names = re.findall(r"^  [\w\[](?:[^(\n]*[^\w~])?(\w+)\(", section, re.M)
                (public if access == "public" else others).update(names)
    return others - public


def main():
    operations, called = set(), set()
    instances = re.findall(r"^template class (.*);$", (ROOT / "tests/exhaustion/Census.cpp").read_text(), re.M)
    for path in map(pathlib.Path, sys.argv[1:]):
        if ".so" in path.suffixes:
            operations |= symbols(path, "TW", "-D", "--defined-only")
        elif path.name.startswith("Census"):
            operations |= {name for name in symbols(path, "W", "--defined-only")
                           if re.sub("::[^:]*$", "", name.split("(")[0]).replace(" ", "") in instances}
        else:
            # What is inline stands in the object itself.
            called |= symbols(path, "UW")

    private = hidden()
    operations = {name for name in operations
                  if not LEFT_OUT.search(name) and re.findall(r"\w+", name.split("(")[0])[-1] not in private}
    missing = sorted(operations - called)
    for name in missing:
        print(f"not in the table: {name}")
    print(f"{len(operations)} operations, {len(missing)} missing")
    sys.exit(1 if missing or len(operations) < 400 else 0)


if __name__ == "__main__":
    main()
