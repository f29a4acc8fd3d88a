#!/usr/bin/env python3
"""Runs a program under GDB and holds what the printers show against what they should show.

usage: printers_test.py [--update] PROGRAM FOLDER...     the folders are those that GDB may load scripts from

What is looked at where the program stops says expected.txt itself: each "== stop" and each "name = ..." below it.
"""

import pathlib
import re
import subprocess
import sys

EXPECTED = pathlib.Path(__file__).resolve().parent / 'expected.txt'


def main():
    program, *folders = (a for a in sys.argv[1:] if a != "--update")
    expected = EXPECTED.read_text()
    script = ['set print elements 40', 'break Stop', 'break Tables', 'run']
    for stop in re.split(r'^== ', expected, flags=re.M)[1:]:
        script += ['up', f'echo == {stop.split()[0]}\\n']
        for name in re.findall(r'^(\w+) = ', stop, re.M):
            script += [f'echo {name} =\\040', f'output {name}', 'echo \\n']
        script.append('continue')
        if stop.startswith('texts'):
            # Nothing of this function is constructed yet. Whatever is shown, GDB has to get over it.
            script += ['info locals', 'continue']
    command = ['gdb', '-nx', '-batch', '-iex', 'add-auto-load-safe-path ' + ':'.join(folders), '-iex',
               'set debuginfod enabled off', *(word for line in script for word in ('-ex', line)), program]
    done = subprocess.run(command, capture_output=True, text=True, timeout=120)
    blocks = re.findall(r'^== .*?(?=^$|^Breakpoint|^\[Inferior|\Z)', done.stdout, re.S | re.M)
    # How much a table takes is the region's affair.
    shown = re.sub(r'\b[1-9]\d* (bytes|blocks)', r'N \1', '\n'.join(block.rstrip() for block in blocks) + '\n')
    shown = re.sub(r'@0x[0-9a-f]+: ', '', shown)
    if '--update' in sys.argv:
        EXPECTED.write_text(shown)
    elif shown != expected:
        sys.exit(f'expected\n{expected}\nbut GDB shows\n{shown}\n{done.stdout}{done.stderr}')


if __name__ == '__main__':
    main()
