"""Fails where a public operation of the libraries is missing from the table of operations.

usage: complete.py PROGRAM INSTANCES LIBRARY... OBJECT...

What the libraries export, and what Census.cpp has of the templates, by its INSTANCES, has to be called by an object
of the table. Left out are destructors, which every fixture calls, what takes a private record, which no caller can
make, what is not public, as PROGRAM's debug information says, and the region, which the test program brings itself.
"""

import os
import pathlib
import re
import subprocess
import sys

try:
    from elftools.elf import elffile
except ImportError:
    # Debian's package belongs to Debian's own interpreter.
    if sys.executable == "/usr/bin/python3":
        sys.exit("python3-pyelftools is not installed; scripts/setup installs it")
    os.execv("/usr/bin/python3", ["/usr/bin/python3", *sys.argv])

PUBLIC = 1  # DW_ACCESS_public
LEFT_OUT = re.compile(r"~|::Data|[{]lambda|operator delete|^(\S+ )*std::|^OmMemoryRegion::"
                      # Of vectors of characters alone, which clang 14 overlooks in an instance.
                      r"|OmFootnote>::OmVector\(char const\*")


def symbols(path, kinds, *options):
    """The demangled symbols of a file whose kind is one of `kinds`."""
    output = subprocess.run(["nm", "-C", *options, path], check=True, capture_output=True, text=True).stdout
    found = re.findall(rf"^[0-9a-f ]*[{kinds}] (.*)$", output, re.M)
    return {name.replace("[abi:cxx11]", "") for name in found}


def not_public(program):
    """The demangled member functions of the program's Census source that are private or protected, or in a class that
    is, as the compiler described them for a debugger."""
    names, classes = set(), ("DW_TAG_class_type", "DW_TAG_structure_type")

    def visit(die, hidden):
        for child in die.iter_children():
            access = child.attributes.get("DW_AT_accessibility")
            private = access.value != PUBLIC if access else die.tag == "DW_TAG_class_type"
            if child.tag == "DW_TAG_namespace":
                visit(child, False)
            elif child.tag in classes:
                visit(child, hidden or private)
            elif child.tag == "DW_TAG_subprogram" and die.tag in classes and (hidden or private):
                name = child.attributes.get("DW_AT_linkage_name")
                names.update([name.value.decode()] if name else [])

    with open(program, "rb") as file:
        for unit in elffile.ELFFile(file).get_dwarf_info().iter_CUs():
            top = unit.get_top_DIE()
            if top.attributes["DW_AT_name"].value.endswith(b"Census.cpp"):
                visit(top, False)
    output = subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True, text=True).stdout
    return {name.replace("[abi:cxx11]", "") for name in output.splitlines()}


def main():
    operations, called = set(), set()
    program, instances, *files = sys.argv[1:]
    instances = instances.split(",")
    for path in map(pathlib.Path, files):
        if ".so" in path.suffixes:
            operations |= symbols(path, "TW", "-D", "--defined-only")
        elif path.name.startswith("Census"):
            operations |= {name for name in symbols(path, "W", "--defined-only")
                           if re.sub("::[^:]*$", "", name.split("(")[0]).replace(" ", "") in instances}
        else:
            # What is inline stands in the object itself.
            called |= symbols(path, "UW")

    private = not_public(program)
    operations = {name for name in operations if not LEFT_OUT.search(name) and name not in private}
    missing = sorted(operations - called)
    for name in missing:
        print(f"not in the table: {name}")
    print(f"{len(operations)} operations, {len(missing)} missing")
    sys.exit(1 if missing or len(operations) < 400 else 0)


if __name__ == "__main__":
    main()
