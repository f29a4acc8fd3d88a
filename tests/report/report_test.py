"""Tests of the report program: its tables against sums that are worked out here from the same files."""

import csv
import io
import itertools
import os
import random
import re
import statistics
import subprocess
import sys
import tempfile
import unicodedata
import unittest
from collections import Counter

PROGRAM = sys.argv.pop(1)
DATA = os.path.join(os.path.dirname(os.path.abspath(__file__)), '../../examples/report/data')
TITANIC = os.path.join(DATA, 'titanic.csv')
PENGUINS = os.path.join(DATA, 'penguins.csv')
SEED = int(os.environ.get('REPORT_TEST_SEED', random.randrange(1 << 30)))


def run(*arguments):
    result = subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, timeout=300)
    return result.returncode, result.stdout.decode(), result.stderr.decode()


def report(*arguments):
    status, out, error = run(*arguments)
    assert (status, error) == (0, ''), (arguments, status, error)
    return out


def read(path):
    with open(path, newline='', encoding='utf-8-sig') as file:
        return list(csv.DictReader(file))


def width(text):
    return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in 'WF' else 1
               for c in text)


def key(value):
    """The order of categories: numbers by value, then texts by their bytes."""
    try:
        return 0, float(value), value.encode()
    except ValueError:
        return 1, 0, value.encode()


def tables(out):
    """All tables: (lines above, rows of cells). A row head that is not repeated is filled in."""
    found = []
    lines = out.split('\n')
    for begin in range(len(lines)):
        if not lines[begin].startswith(('+-', '┌')) or lines[begin - 1].startswith(('|', '+')):
            continue
        above = list(itertools.takewhile(bool, reversed(lines[:begin])))[::-1]
        rows = []
        for line in itertools.takewhile(lambda text: text[:1] in tuple('│├└|+-'), lines[begin + 1:]):
            if line[0] in '│|' and not re.search('[─┼┤]|--[+|-]', line):
                rows.append([cell.strip() for cell in re.split('[│|]', line)[1:-1]])
        found.append((above, rows))
    return found


def number(text):
    return float(re.sub(r'[^\d.-].*', '', text)) if text not in ('', '.') else None


def body(rows, heads):
    """{row heads: numbers} of the rows that hold numbers, the heads filled in."""
    result, current = {}, [''] * heads
    columns = max(map(len, rows)) - heads
    for row in rows:
        label = row[:len(row) - columns]
        for i, text in enumerate(label):
            if text:
                current[i:] = [text] + [''] * (heads - i - 1)
        values = row[len(label):]
        if all(re.fullmatch(r'(-?[\d.]+(\[.*\])?)?', value) for value in values):
            result[tuple(current)] = [number(value) for value in values]
    return result


def write(folder, names, rows):
    path = os.path.join(folder, 'data.csv')
    with open(path, 'w', encoding='utf-8', newline='') as file:
        csv.writer(file, lineterminator='\n').writerows([names, *rows])
    return path


class ReportTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def file(self, content, name='data.csv'):
        path = os.path.join(self.folder.name, name)
        with open(path, 'wb') as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return path

    def write(self, names, rows):
        return write(self.folder.name, names, rows)

    def check_cross(self, path, rows, columns, layers, weight=None):
        """Holds every cell of every layer of a crosstabulation against a count of the file."""
        cases = read(path)
        names = rows + columns + layers
        total = Counter()
        for case in cases:
            if all(case[name] not in ('', 'NA') for name in names):
                for mask in itertools.product((False, True), repeat=len(names)):
                    place = tuple(None if m else case[n] for n, m in zip(names, mask))
                    total[place] += float(case[weight]) if weight else 1
        arguments = ['--ascii', '--width', 5000]
        for option, axis in (('--rows', rows), ('--columns', columns), ('--layers', layers)):
            arguments += [option, ','.join(axis)] if axis else []
        arguments += ['--weight', weight] if weight else []
        title = ' by '.join(names)
        section = report(path, *arguments).split('\nCrosstabulation\n')[1]
        found = [table for table in tables(section.split('\nDescriptives\n')[0])
                 if re.sub(r'\[\w\]$', '', table[0][0]) == title]
        entries = {n: sorted({c[n] for c in cases} - {'', 'NA'}, key=key) + [None] for n in names}
        places = list(itertools.product(*(entries[name] for name in layers)))
        self.assertEqual(len(found), len(places))
        for (above, table), layer in zip(found, places):
            labels = [f'{n}: {v or "Total"}' for n, v in zip(layers, layer)]
            self.assertEqual(above[1:], labels)
            cells = body(table, len(rows) + 1)
            for row in itertools.product(*(entries[name] for name in rows)):
                across = list(itertools.product(*(entries[name] for name in columns)))
                lines = {'Count': [], 'Row %': [], 'Column %': []}
                for column in across:
                    n = total[row + column + layer]
                    lines['Count'].append(n or None)
                    for statistic, whole in (('Row %', row + (None,) * len(columns) + layer),
                                             ('Column %', (None,) * len(rows) + column + layer)):
                        lines[statistic].append(n and 100 * n / total[whole] or None)
                for statistic in ['Row %'] * (not columns) + ['Column %'] * (not rows):
                    del lines[statistic]
                for statistic, expected in lines.items():
                    actual = cells[tuple(v or 'Total' for v in row) + (statistic,)]
                    self.assertEqual(len(actual), len(expected))
                    for a, e in zip(actual, expected):
                        self.assertEqual(a is None, e is None, (row, layer, statistic))
                        self.assertAlmostEqual(a or 0, e or 0, delta=0.0501)

    def test_counts_agree_with_a_second_computation(self):
        self.check_cross(TITANIC, ['Class', 'Sex'], ['Survived'], ['Age'])
        variables = ['Class', 'Sex', 'Age', 'Survived']
        for _ in range(8):
            axes = [[], [], []]
            for name in random.sample(variables, random.randint(1, 4)):
                random.choice(axes).append(name)
            self.check_cross(TITANIC, *axes)
        self.check_cross(PENGUINS, ['Island'], ['Sex', 'Species'], [])

    def test_weighted_counts_are_those_of_the_cases(self):
        cases = read(TITANIC)
        counts = Counter(tuple(case.values()) for case in cases)
        rows = [[*case, n] for case, n in counts.items()] + [['1st', 'Male', 'Child', 'No', 0]]
        path = self.write([*cases[0], 'Count'], rows)
        self.check_cross(path, ['Class'], ['Survived', 'Age'], ['Sex'], 'Count')
        self.assertIn('1 case without a positive weight', report(path, '--weight', 'Count'))

    def test_frequencies(self):
        cases = read(PENGUINS)
        found = dict((above[0], rows) for above, rows in
                     tables(report(PENGUINS, '--rows', 'Sex,Body mass (g)', '--ascii')))
        for name in ('Sex', 'Body mass (g)'):
            counts = Counter(case[name] for case in cases)
            missing = counts.pop('NA')
            cells = body(found[name], 2)
            valid, so_far = sum(counts.values()), 0
            for value in sorted(counts, key=key):
                so_far += counts[value]
                expected = [counts[value], 100 * counts[value] / len(cases),
                            100 * counts[value] / valid, 100 * so_far / valid]
                for a, e in zip(cells['Valid', value], expected):
                    self.assertAlmostEqual(a, e, delta=0.0501)
            self.assertEqual(cells['Valid', 'Total'][0], valid)
            self.assertEqual(cells['Missing', 'No value'][0], missing)
            self.assertEqual(cells['Total', ''][0], len(cases))

    def test_descriptives(self):
        out = report(PENGUINS, '--by', 'Sex', '--ascii', '--width', 200)
        (above, rows), = [t for t in tables(out) if t[0][0].endswith('by Sex')]
        cells = body(rows, 2)
        for measure in ('Bill length (mm)', 'Bill depth (mm)', 'Flipper length (mm)', 'Body mass (g)'):
            for sex in ('Female', 'Male', 'Total'):
                values = [float(c[measure]) for c in read(PENGUINS) if c[measure] != 'NA' and
                          (c['Sex'] == sex or sex == 'Total' and c['Sex'] != 'NA')]
                expected = [len(values), statistics.mean(values), statistics.stdev(values),
                            min(values), max(values)]
                for a, e in zip(cells[measure, sex], expected):
                    self.assertAlmostEqual(a, e, delta=0.00501)

    def test_footnotes_stand_where_values_were_left_out(self):
        path = self.write(['G', 'X'], [['a', 1.5], ['a', ''], ['b', 2.5], ['b', 3.5], ['c', 'NA'],
                                       ['c', 'oops'], ['c', 9.25]])
        out = report(path, '--by', 'G', '--measures', 'X', '--ascii')
        (_, rows), = [t for t in tables(out) if t[0][0] == 'X by G']
        marks = {tuple(r[:2])[1]: r[2] for r in rows if re.match(r'\d', r[2])}
        self.assertEqual(marks, {'a': '1[a]', 'b': '2', 'c': '1[b]', 'Total': '4[c]'})
        for line in ('[a] 1 case without a number left out.', '[b] 2 cases without a number',
                     '[c] 3 cases', 'X holds values that are no numbers'):
            self.assertIn(line, out)

    def test_csv(self):
        parts = ['a,b', 'two\nlines', 'say "x"', 'plain', 'Grüße', '漢字', ' padded ', 'x\r\ny', '-']
        rows = [[random.choice(parts), random.choice('uvw')] for _ in range(200)]
        text = io.StringIO()
        csv.writer(text, quoting=csv.QUOTE_ALL, lineterminator='\n').writerows([['P', 'Q'], *rows])
        plain = text.getvalue()
        expected = None
        for content in (plain, '\ufeff' + plain, plain.rstrip('\n'), plain.replace('"\n"', '"\r\n"'),
                        plain.replace('"\n"', '"\r"'), plain.replace('"\n"', '"\n\n"'),
                        plain.replace('"u"\n', 'u\n').replace('"v"\n', '  v \t\n')):
            out = report(self.file(content), '--rows', 'P', '--columns', 'Q', '--ascii')
            expected = expected or out
            self.assertEqual(out, expected)
        (_, found), = [t for t in tables(out) if t[0][0] == 'P']
        counts = sorted((p.encode(), n) for p, n in Counter(p for p, _ in rows).items())
        self.assertEqual([row[2] for row in found if re.match(r'\d', row[2])][:-2],
                         [str(n) for _, n in counts])

    def test_errors(self):
        long = 'a,b\n' + '1,2\n' * 100000
        for content, arguments, message in (
                (None, (), r'none\.csv: the file cannot be opened: No such'),
                ('', (), r':1: the file is empty'),
                ('a,b\n', (), r':1: there is no case'),
                (long + '1,2,3\n', (), r':100002: the line has 3 fields'),
                ('a,b\r\n"x\r\ny",2\r\n\r\n3\r\n', (), r':5: the line has 1 field where the heading has 2'),
                ('a,b\n1,2\n"x\ny,2\n3,4\n', (), r':3: a quoted field that begins here'),
                ('a,b\n1,2\n3,x"y\n', (), r':3: a quotation mark'),
                (b'a,b\n1,2\n\xff,2\n', (), r':3: the text is not valid UTF-8'),
                (b'a,b\n1,2\0\n', (), r'the file is not text'),
                ('a,a\n1,2\n', (), r":1: there are two variables named 'a'"),
                ('a,,c\n1,2,3\n', (), r':1: variable 2 has no name'),
                ('a,b\n1,2\n', ('--rows', 'A'), r":1: there is no variable 'A'; there are: a, b"),
                ('a,b\n1,2\n', ('--rows', 'a', '--layers', 'b,a'), r"'a' is on the axes twice"),
                ('a,b\n1,2\n', ('--width', '3'), r'--width'),
                ('a,b\n1,2\n', ('--nonsense',), r'--nonsense')):
            with self.subTest(message=message):
                path = self.file(content, 'none.csv') if content is not None else \
                    os.path.join(self.folder.name, 'none.csv')
                status, out, error = run(path, *arguments)
                self.assertEqual((status, out), (2, ''))
                self.assertRegex(error, message)
                self.assertTrue('none.csv' not in error or error.count('\n') == 1, error)

    def test_a_procedure_that_fails_leaves_the_rest(self):
        names = [f'n{i}' for i in range(5000)]
        path = self.write(['G', 'H', 'T', 'M', 'W', 'E'],
                          [['ab'[i % 2], 'xyz'[i % 3], name, i / 2, -1 if i == 9 else 1, '']
                           for i, name in enumerate(names)])
        every = ['Frequencies', 'Crosstabulation', 'Descriptives', 'Charts and Models']
        good = ('--rows', 'G', '--columns', 'H')
        cases = (
            (('--measures', 'M,T'), 'Descriptives', 'T holds no number.'),
            (('--layers', 'T'), 'Crosstabulation', 'T has more than 4096 different values.'),
            (('--layers', 'E'), 'Crosstabulation', 'E holds no value.'),
            (('--weight', 'E'), 'Frequencies', 'No case has a weight.'),
            (('--weight', 'W'), 'Frequencies', 'The weight variable W is negative in case 10.'))
        for arguments, failed, message in cases:
            out = report(path, *good, *arguments, '--ascii')
            parts = re.split(r'\n(%s)\n=+\n' % '|'.join(every), out)
            self.assertEqual(parts[1::2], every)
            sections = dict(zip(every, parts[2::2]))
            self.assertIn(f'{failed} stopped:\n{message}\n', sections[failed])
            self.assertNotIn('Case Processing', sections[failed])
            self.assertRegex(sections[failed], r'Warnings\n\+-+\+\n\| %s +\|' % re.escape(message))
            rest = 'Crosstabulation' if failed == 'Descriptives' else 'Descriptives'
            self.assertEqual('Case Processing' in sections[rest], '--weight' not in arguments)
            if '--layers' in arguments:
                # The other frequency tables stand, the message in the place of this one.
                self.assertIn(f'{arguments[1]}:\n{message}\n', sections['Frequencies'])
                self.assertIn('\nG\n+', sections['Frequencies'])

    def test_frames(self):
        """Random tables at random widths: even edges, no line over the page, no column lost."""
        for _ in range(25):
            words = [''.join(random.choices('ab é漢', k=random.randint(1, 14))).strip() or 'x'
                     for _ in range(5)]
            names = ['V' * random.randint(1, 20) + letter for letter in 'ABCD']
            path = self.write(names, [[random.choice(words[:i + 1]) for i in range(4)]
                                      for _ in range(60)])
            axes = [names[0:1], names[1:3], names[3:]]
            random.shuffle(axes)
            page = random.randint(70, 160)
            arguments = [path, '--rows', ','.join(axes[0]), '--columns', ','.join(axes[1]),
                         '--layers', ','.join(axes[2])] + ['--skip-empty'] * random.randint(0, 1)
            narrow, wide = report(*arguments, '--width', page), report(*arguments, '--width', 9000)
            for out in (narrow, wide):
                for block in re.findall(r'(?:^[┌├│└].*\n)+', out, re.M):
                    self.assertEqual(len({width(line) for line in block.split('\n')[:-1]}), 1, block)
            self.assertLessEqual(max(width(line) for line in narrow.split('\n')), page)
            numbers = [Counter(re.findall(r'(?<= )\d+(?:\.\d)?(?= )', text)) for text in
                       (re.sub('(?s).*Crosstabulation\n═', '', out) for out in (narrow, wide))]
            self.assertEqual(*numbers)

    def test_a_terminal_is_safe_from_data(self):
        path = self.file('a\x1b[31m,"b\nc"\n"x\x07\u202ey",1\nz\x9b,2\n')
        for arguments in ((), ('--rows', 'nothing')):
            _, out, error = run(path, *arguments)
            self.assertFalse([c for c in (out + error).replace('\n', '')
                              if unicodedata.category(c) in ('Cc', 'Cf')])
        self.assertEqual(error.count('\n'), 1)


if __name__ == '__main__':
    print('seed', SEED)
    random.seed(SEED)
    unittest.main()
