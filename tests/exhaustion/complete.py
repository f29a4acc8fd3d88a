"""Fails where a public operation of the libraries is missing from the table of operations.

usage: complete.py --libraries LIBRARY... --objects OBJECT...

What the libraries export, and what Census holds of the templates, has to be called by an object of the
table. Left out are destructors, which every fixture calls, what takes a private record, which no caller
can make, and what a header declares as private.
"""

import argparse
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
CENSUS = "Census"


def instances():
    """The classes that Census.h instantiates."""
    text = (ROOT / "tests/exhaustion/Census.h").read_text()
    return re.findall(r"^CENSUS class (.*);$", text, re.M)


def symbols(path, kinds, *options):
    """The demangled symbols of a file whose kind is one of `kinds`."""
    output = subprocess.run(["nm", "-C", *options, path], check=True, capture_output=True, text=True).stdout
    found = re.findall(rf"^[0-9a-f ]*([{kinds}]) (.*)$", output, re.M)
    return {name.replace("[abi:cxx11]", "") for _, name in found}


def parameters(text):
    """The number of parameters in a list, whose nested commas do not count."""
    depth, count = 0, 1 if text.strip() else 0
    for c in text:
        depth += c in "<([{"
        depth -= c in ">)]}"
        count += c == "," and depth == 0
    return count


def matching(text, start):
    """The text between the parenthesis at `start` and its match."""
    depth = 0
    for i in range(start, len(text)):
        depth += text[i] == "("
        depth -= text[i] == ")"
        if depth == 0:
            return text[start + 1:i]
    return ""


def private_operations():
    """(class, operation, parameters) of all that stands in a private or protected section, and of a class
    there (class, name)."""
    found = set()
    for header in [*ROOT.glob("backend/**/*.h"), *ROOT.glob("platform/**/*.h")]:
        text = re.sub(r"//.*", "", header.read_text())
        # The sections of a class end where another access begins or at the closing brace in column 0.
        for owner in re.finditer(r"^(?:class|struct)\b[^;{]*?([\w:]+)(?:<\w+>)?(?:::(\w+))?(?:\s+final)?(?:\s*:[^{]*)?\s*\{(.*?)^\};",
                                 text, re.M | re.S):
            name = (owner.group(2) or owner.group(1)).split("::")[-1]
            for section in re.finditer(r"^ (?:private|protected):(.*?)(?=^ public:|\Z)", owner.group(3), re.M | re.S):
                body = section.group(1)
                found |= {(name, nested) for nested in re.findall(r"\b(?:class|struct) (\w+)", body)}
                for call in re.finditer(r"(~?\w+|operator \w+)\(", body):
                    found.add((name, call.group(1), parameters(matching(body, call.end() - 1))))
    return found


def parts(symbol):
    """(class, operation, parameters) of a demangled symbol."""
    flat = symbol.replace("(anonymous namespace)", "")
    while True:
        shorter = re.sub(r"<[^<>]*>", "", flat)
        if shorter == flat:
            break
        flat = shorter
    name = flat.split("(")[0].split()[-1] if "operator" not in flat.split("(")[0] else flat.split("(")[0]
    scope = name.split("::")
    return (scope[-2] if len(scope) > 1 else "", scope[-1], parameters(matching(flat, flat.index("("))))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--libraries", nargs="+", required=True)
    parser.add_argument("--objects", nargs="+", required=True)
    options = parser.parse_args()

    exported, called = set(), set()
    for library in options.libraries:
        exported |= {name for name in symbols(library, "TW", "-D", "--defined-only")
                     if not re.match(r"(\S+ )*std::", name)}
    for path in options.objects:
        if pathlib.Path(path).name.startswith(CENSUS):
            members = tuple(name.replace(" ", "") + "::" for name in instances())
            exported |= {name for name in symbols(path, "W", "--defined-only")
                         for member in members if name.replace(" ", "").startswith(member)
                         and re.match(r"[\w =<>!\[\]*+-]+\(", name.replace(" ", "")[len(member):])}
        else:
            # What is inline stands in the object itself.
            called |= symbols(path, "UW")

    hidden = private_operations()
    operations = {name for name in exported
                  if "~" not in name and "operator delete" not in name and "::Data" not in name
                  # Of vectors of characters alone, which clang 14 overlooks in an instance.
                  and "OmFootnote>::OmVector(char const*" not in name
                  and not ("(" in name and parts(name) in hidden)
                  and not any(pair in hidden for pair in re.findall(r"(\w+)::(?=(\w+)::)", name))}
    missing = sorted(operations - called)
    for name in missing:
        print(f"not in the table: {name}")
    print(f"{len(operations)} operations, {len(missing)} missing")
    sys.exit(1 if missing or len(operations) < 400 else 0)


if __name__ == "__main__":
    main()
