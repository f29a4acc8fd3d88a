#!/usr/bin/env python3
"""Checks that the guides quote the current sources and output of the snippets.

usage: check.py [--update] PROGRAMS        PROGRAMS is the folder with the built snippets

A guide quotes source between two lines `// [name]` (`# [name]` in CMake files), and the complete output:

    <!-- snippet: table.cpp#cells -->
    <!-- output: table -->
    <!-- failure: misuse -->      the message of a program that an assertion ends

each followed by a fenced block. Paths start at docs/snippets. Every fenced block of C++ in docs must be such a
quotation, and every link on the pages in docs and in the root folder must lead to a file. With --update the blocks are
written instead of compared.
"""

import pathlib
import re
import subprocess
import sys
import textwrap

HERE = pathlib.Path(__file__).resolve().parent
MARKER = re.compile(r'<!-- (snippet|output|failure): (\S+?)(?:#(\S+))? -->\n```(\w*)\n(.*?)```\n', re.S)


def snippet(path, name):
    lines = (HERE / path).read_text().splitlines()
    if name is None:
        return '\n'.join(lines) + '\n'
    marks = [i for i, line in enumerate(lines) if re.fullmatch(rf'\s*(//|#) \[{name}\]', line)]
    if len(marks) != 2:
        raise SystemExit(f'{path}: {len(marks)} marks "[{name}]", not 2')
    return textwrap.dedent('\n'.join(lines[marks[0] + 1:marks[1]])) + '\n'


def output(programs, name):
    done = subprocess.run([programs / name], capture_output=True, text=True, timeout=60)
    if done.returncode != 0:
        raise SystemExit(f'{name} ends with {done.returncode}: {done.stderr}')
    return done.stdout


def failure(programs, name):
    done = subprocess.run([programs / name], capture_output=True, text=True, timeout=60)
    if done.returncode >= 0:
        raise SystemExit(f'{name} does not fail')
    # Folders and line numbers do not belong on a page.
    return re.sub(r'^\S*/(\w+\.(?:h|cpp)):\d+', r'\1:<line>', done.stderr, flags=re.M)


def main():
    update = '--update' in sys.argv
    programs = pathlib.Path(sys.argv[-1]).resolve()
    outputs = {}
    quoted, wrong = set(), 0
    for guide in sorted(HERE.parent.glob('*.md')) + sorted(HERE.parents[1].glob('*.md')):
        text = guide.read_text()

        def block(match):
            kind, path, name, language, _ = match.groups()
            if kind == 'snippet':
                quoted.add((path, name))
                body = snippet(path, name)
            elif kind == 'failure':
                body = outputs[path] = failure(programs, path)
            else:
                if path not in outputs:
                    outputs[path] = output(programs, path)
                body = outputs[path]
            head = f'<!-- {kind}: {path}' + (f'#{name}' if name else '') + ' -->'
            return f'{head}\n```{language}\n{body}```\n'

        fresh = MARKER.sub(block, text)
        if len(MARKER.findall(text)) != len(re.findall('<!-- (?:snippet|output|failure): ', text)):
            print(f'{guide.name}: a marker without its block')
            wrong += 1
        loose = re.findall(r'```cpp\n(.*?)```', MARKER.sub('', text), re.S)
        for code in loose if guide.parent == HERE.parent else []:
            print(f'{guide.name}: C++ that no program compiles: {code.splitlines()[0]}')
            wrong += 1
        for target in re.findall(r'\]\(([^)#:]+?)(?:#[^)]*)?\)', text):
            if not (guide.parent / target).exists():
                print(f'{guide.name}: a link to {target}, which does not exist')
                wrong += 1
        if fresh != text:
            if update:
                guide.write_text(fresh)
            else:
                print(f'{guide.name} and what it quotes differ; docs/snippets/check.py --update corrects the page')
                wrong += 1
    sources = {path.name for path in HERE.glob('*.cpp')}
    for name in sorted({path[:-4] for path, _ in quoted if path in sources} - set(outputs)):
        outputs[name] = output(programs, name)  # no page shows it, but it must run
    for name in sorted(sources - {path for path, _ in quoted}):
        print(f'{name}: quoted by no guide')
        wrong += 1
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main())
