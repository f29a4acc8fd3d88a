#!/usr/bin/env python3
"""Runs a program under GDB and holds what the printers show against what they should show.

usage: printers_test.py [--update] PROGRAM FOLDER...     the folders are those that GDB may load scripts from
"""

import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
STOPS = {
    'containers': ['region', 'numbers', 'none', 'axis'],
    'texts': ['plain', 'utf8', 'number', 'variable', 'unlabelled', 'numValue', 'bareValue', 'stringValue',
              'composite', 'any'],
    'tables': ['document', 'root', 'place', 'end', 'table', 'empty', 'dimension', 'group', 'nowhere', 'category',
               'cell', 'atEnd', 'note', 'layers', 'rows', 'columns', 'header'],
    'errors': ['error'],
}


def main():
    program, *folders = (a for a in sys.argv[1:] if a != "--update")
    command = ['gdb', '-nx', '-batch', '-iex', 'add-auto-load-safe-path ' + ':'.join(folders),
               '-iex', 'set debuginfod enabled off', '-ex', 'set print elements 40', '-ex', 'break Stop',
               '-ex', 'break Tables', '-ex', 'run']
    for stop, names in STOPS.items():
        command += ['-ex', 'up', '-ex', f'echo == {stop}\\n']
        for name in names:
            command += ['-ex', f'echo {name} =\\040', '-ex', f'output {name}', '-ex', 'echo \\n']
        command += ['-ex', 'continue']
        if stop == 'texts':
            # Nothing of this function is constructed yet. Whatever is shown, GDB has to get over it.
            command += ['-ex', 'info locals', '-ex', 'continue']
    done = subprocess.run(command + [program], capture_output=True, text=True, timeout=120)
    shown = []
    for block in re.findall(r'^== .*?(?=^$|^Breakpoint|^\[Inferior|\Z)', done.stdout, re.S | re.M):
        shown.append(block.rstrip())
    shown = '\n'.join(shown) + '\n'
    # How much a table takes is the region's affair.
    shown = re.sub(r'\b[1-9]\d* (bytes|blocks)', r'N \1', shown)
    shown = re.sub(r'@0x[0-9a-f]+: ', '', shown)
    expected = (HERE / 'expected.txt').read_text()
    if '--update' in sys.argv:
        (HERE / 'expected.txt').write_text(shown)
    elif shown != expected:
        print('expected\n' + expected + '\nbut GDB shows\n' + shown + '\n' + done.stdout + done.stderr)
        return 1
    return 0


if __name__ == '__main__':
    sys.exit(main())
