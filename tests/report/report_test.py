"""Tests of the report program: what it writes against what is worked out here from the same files."""

import base64
import csv
import html
import math
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
from itertools import product

PROGRAM = sys.argv.pop(1)
HERE = os.path.dirname(os.path.abspath(__file__))
TITANIC = os.path.join(HERE, '../../examples/report/data/titanic.csv')
PENGUINS = os.path.join(HERE, '../../examples/report/data/penguins.csv')
SEED = int(os.environ.get('REPORT_TEST_SEED', random.randrange(1 << 30)))


def run(*arguments):
    result = subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, timeout=300)
    return result.returncode, result.stdout.decode(), result.stderr.decode()


def report(*arguments):
    status, out, error = run(*arguments)
    assert (status, error) == (0, ''), (arguments, status, error)
    return out


def write(folder, content, end='\n', encoding='utf-8'):
    """Writes a text as it is, or lines of fields."""
    path = os.path.join(folder, 'data.csv')
    with open(path, 'w', encoding=encoding, newline='', errors='surrogateescape') as file:
        if isinstance(content, str):
            file.write(content)
        else:
            csv.writer(file, lineterminator=end).writerows(content)
    return path


def scatter(names):
    """Lays variables on the axes at random; returns the axes and the arguments for them."""
    axes = {'--rows': [], '--columns': [], '--layers': []}
    for name in names:
        random.choice(list(axes.values())).append(name)
    return [*axes.values()], [text for option in axes if axes[option]
                              for text in (option, ','.join(axes[option]))]


def number(text):
    try:
        return float(text) if math.isfinite(float(text)) else None
    except ValueError:
        return None


def key(value):
    """The order of categories: numbers by value, then texts by their bytes."""
    return number(value) is None, number(value) or 0, value.encode()


def percent(part, whole):
    return f'{100 * part / whole:.1f}'


def left_out(count, why):
    return f'{count} case{"s" * (count != 1)} {why} left out.'


def tables(out):
    """Yields what stands above, in and below each table of a text report in ASCII."""
    for block in out.split('\n\n'):
        above, frame, rest = ('\n' + block).partition('\n+-')
        lines = rest.split('\n')
        if frame:
            yield (above.split('\n')[1:],
                   [[cell.strip() for cell in line.split('|')[1:-1]] for line in lines
                    if line[0] == '|' and '--' not in line],
                   [line for line in lines[1:] if line[0] not in '|+'])


class Twin:
    """A data file, counted in the plainest way. Its tables come as what stands above, the number of row
    labels but the innermost, the lines without the heads, and what stands below."""

    def __init__(self, path, axes, measures, by, weight=None):
        self.axes, self.names, self.measures, self.by = axes, sum(axes, []), measures, by
        with open(path, newline='', encoding='utf-8-sig') as file:
            cases = [{name: '' if value == 'NA' else value for name, value in case.items()}
                     for case in csv.DictReader(file)]
        self.entries = {name: sorted({case[name] for case in cases} - {''}, key=key) for name in cases[0]}
        self.cases = [case for case in cases for _ in range(int(case[weight]) if weight else 1)]

    def count(self, names, total=()):
        """Counts the combinations of values, "Total" standing for any."""
        return Counter(place for case in self.cases if all(case[name] for name in names)
                       for place in product(*((case[name], *total) for name in names)))

    def frequencies(self):
        for name in self.names:
            counts, lines, so_far = self.count([name]), [], 0
            valid, total = sum(counts.values()), len(self.cases)
            for value in self.entries[name]:
                n = counts[value,]
                so_far += n
                lines.append(['Valid', value, f'{n}', percent(n, total), percent(n, valid),
                              percent(so_far, valid)])
            lines.append(['Valid', 'Total', f'{valid}', percent(valid, total), '100.0', ''])
            left = total - valid
            lines += [['Missing', 'No value', f'{left}[a]', percent(left, total), '', '']] * (left > 0)
            lines.append(['Total', f'{total}', '100.0', '', ''])
            note = '[a] Left out of the valid and the cumulative percentages.'
            yield [name], 1, lines, [note] * (left > 0)

    def crosstabulation(self):
        rows, columns, layers = self.axes
        places = [list(product(*(self.entries[name] + ['Total'] for name in axis))) for axis in self.axes]
        counts = self.count(self.names, ['Total'])
        left = len(self.cases) - counts[('Total',) * len(self.names)]
        kinds = ['Count'] + ['Row %'] * bool(columns) + ['Column %'] * bool(rows)
        for layer in places[2]:
            lines = [[*rows, '', *(column[-1] for column in places[1])]] if columns else []
            for row, kind in product(places[0], kinds):
                lines.append([*row, kind])
                for column in places[1]:
                    n = counts[row + column + layer]
                    whole = (row + places[1][-1] if kind == 'Row %' else places[0][-1] + column) + layer
                    lines[-1].append('' if not n else f'{n}' if kind == 'Count' else percent(n, counts[whole]))
            caption = 'Percentages are of the cases in the same row or column of the layer.'
            yield ([' by '.join(self.names) + '[a]' * (left > 0), *map(': '.join, zip(layers, layer))],
                   len(rows), lines, [caption] * (len(kinds) > 1) +
                   ['[a] ' + left_out(left, 'with a missing value')] * (left > 0))

    def descriptives(self):
        lines, notes = [], {}
        for measure, by in product(self.measures, self.entries[self.by] + ['Total']):
            group = [number(case[measure]) for case in self.cases
                     if case[self.by] and by in (case[self.by], 'Total')]
            values = [value for value in group if value is not None]
            lines.append([measure, by, f'{len(values)}'])
            if len(values) < len(group):
                note = left_out(len(group) - len(values), 'without a number')
                lines[-1][-1] += notes.setdefault(note, f'[{chr(ord("a") + len(notes))}]')
            places = max(len(text.partition('.')[2]) for text in self.entries[measure])
            lines[-1] += [f'{of(values):.{places + more}f}' if len(values) >= least else '.'
                          for of, more, least in ((statistics.mean, 2, 1), (statistics.stdev, 2, 2),
                                                  (min, 0, 1), (max, 0, 1))]
        yield ([', '.join(self.measures) + ' by ' + self.by], 1, lines,
               [f'{mark} {note}' for note, mark in notes.items()])


class ReportTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def check_tables(self, path, twin, *arguments):
        found = [table for table in tables(report(path, '--ascii', '--width', 10000, *arguments))
                 if table[0][0] not in ('Notes', 'Case Processing Summary', 'Warnings')]
        wanted = [*twin.frequencies(), *twin.crosstabulation(), *twin.descriptives()]
        self.assertEqual([above for above, *_ in found], [above for above, *_ in wanted])
        for (above, lines, below), (_, heads, expected, notes) in zip(found, wanted):
            for line, before in zip(expected[:0:-1], expected[-2::-1]):
                same = len(os.path.commonprefix([line[:heads], before[:heads]]))
                line[:same] = [''] * same  # a label is not repeated
            lines = lines[-len(expected):]
            self.assertEqual((below, list(map(len, lines))), (notes, list(map(len, expected))), above)
            for a, e in zip(sum(lines, []), sum(expected, [])):
                if a != e:  # the last digit of a mean is open
                    self.assertRegex(e, r'^-?\d+\.\d{3,}$', (above, a))
                    self.assertAlmostEqual(float(a), float(e), delta=0.00101)

    def test_numbers_agree_with_a_second_computation(self):
        twin = Twin(PENGUINS, [['Species'], ['Sex'], ['Island']], [
            'Bill length (mm)', 'Bill depth (mm)', 'Flipper length (mm)', 'Body mass (g)'], 'Species')
        self.check_tables(PENGUINS, twin)  # the variables find their places by themselves
        self.assertIn('[tree diagram] Sex split by Island', report(PENGUINS))
        words = ['10', '9', '9.0', '-1.5', '1e400', 'inf', 'b', 'a', '"Grüße"', 'a b', '漢字', '', 'NA']
        for _ in range(12):
            names = ['G', 'H', 'K', 'L', 'X', 'Y', 'W']
            columns = [words, words[:6], words[-4:], 'uvw', [*map(str, range(20)), '3.25', 'oops', '', 'NA'],
                       [20000000, 20000000.25, 20000001.5], [0, 1, 1, 3]]
            rows = [list(map(random.choice, columns)) for _ in range(random.choice([20, 300]))]
            rows[:0] = [names, ['a', '9', '漢字', 'u', 1.25, 2, 1], ['b', '10', 'a b', 'v', 2, 3, 1]]
            path = write(self.folder, rows, random.choice(['\n', '\r\n', '\r']),
                         random.choice(['utf-8', 'utf-8-sig']))
            axes, arguments = scatter(random.sample(names[:4], random.randint(1, 3)))
            by, weight = random.choice(names[:4]), random.choice(['W', None])
            measures = random.sample('XY', random.randint(1, 2))
            arguments += ['--by', by, '--measures', ','.join(measures)] + ['--weight', 'W'] * bool(weight)
            with self.subTest(arguments=arguments):
                self.check_tables(path, Twin(path, axes, measures, by, weight), *arguments)

    def test_charts_are_as_they_were_kept(self):
        path = write(self.folder, [['G<&>', 'H "h"', 'N', 'X', 'Y', 'W']] + [
            [['<i>', 'a"&', '\\\n\x01', ''][i // 7 % 4], 'abcdefga'[i * 3 % 8], i, i % 13 or 'NA',
             i * i % 17 / 4, i % 3 / 2] for i in range(60)])
        page, shown = os.path.join(self.folder, 'page.html'), ''
        for arguments, parts in ((['--rows', 'G<&>', '--columns', 'H "h"', '--measures', 'X'], slice(5)),
                                 (['--rows', 'G<&>', '--measures', 'Y,X'], slice(5)),
                                 (['--rows', 'N'], slice(2))):
            report(path, '--html', page, '--weight', 'W', *arguments)
            with open(page, encoding='utf-8') as file:
                found = re.findall('svg.xml;base64,([^"]*)|<pre.*?>([^<]*)</pre>', file.read())
            for image, text in found[parts]:
                shown += base64.b64decode(image, validate=True).decode() + html.unescape(text)
        with open(os.path.join(HERE, 'odd_charts.txt'), encoding='utf-8') as file:
            self.assertEqual(shown, file.read())

    def test_charts_that_cannot_be_made_are_said_or_left_out(self):
        for content, arguments, items in (
                ('X\n1.5\n2.5\n', [], []),
                ('X,Y\n1.5,2\n1.5,3.5\n', ['--measures', 'Y,X'],
                 ['Model left out:\nX does not vary where Y has a value.']),
                ('G,H\na,\n,x\n', ['--rows', 'G', '--columns', 'H'], [
                    'Bar chart left out:\nNo case has a value of every variable.',
                    '[interactive] H in every combination', '[model] Naive Bayes model of H',
                    'Tree left out:\nNo factor tells anything about H.'])):
            charts = report(write(self.folder, content), *arguments).partition('\nCharts and Models\n')[2]
            self.assertEqual(charts.split('\n\n')[1:-1], items)

    def test_a_procedure_that_fails_leaves_the_rest(self):
        path = write(self.folder, ['GHTMWE'] + [
            ['ab'[i % 2], 'xyz'[i % 3], f'n{i}' if i else '', i / 2 if i else '', -1 if i == 9 else 1, '']
            for i in range(5000)])
        arguments = [path, '--rows', 'G', '--columns', 'H']
        self.check_tables(path, Twin(path, [['G'], ['H'], []], ['M'], 'G'), *arguments[1:])
        self.assertRegex(report(*arguments, '--weight', 'M'),
                         r'(?s) 6248750\.00 .*1 case without a positive weight left out\.')
        titles = ['Frequencies', 'Crosstabulation', 'Descriptives', 'Charts and Models']
        for option, name, failed, message in (
                ('--measures', 'M,T', 'Descriptives', 'T holds no number.'),
                ('--layers', 'T', 'Crosstabulation', 'T has more than 4096 different values.'),
                ('--layers', 'E', 'Crosstabulation', 'E holds no value.'),
                ('--weight', 'E', 'Frequencies', 'No case has a weight.'),
                ('--weight', 'W', 'Frequencies', 'The weight variable W is negative in case 10.')):
            parts = re.split(r'\n(%s)\n=+\n' % '|'.join(titles), report(*arguments, option, name, '--ascii'))
            self.assertEqual(parts[1::2], titles)
            sections = dict(zip(titles, parts[2::2]))
            self.assertIn(f'{failed} stopped:\n{message}\n', sections[failed])
            self.assertNotIn('Case Processing', sections[failed])
            self.assertRegex(sections[failed], r'Warnings\n(.*\n)+\| %s +\|' % re.escape(message))
            if option == '--layers':
                # The other frequency tables stand, the message in the place of this one.
                valid = {'T': 4999, 'E': 0}[name]
                self.assertRegex(sections['Frequencies'],
                                 rf'(?s)\| {name} +\| +{valid} +\|.*\nG\n\+.*{name}:\n{message}\n')
                self.assertIn('\nM by G\n', sections['Descriptives'])

    def assert_harmless(self, text):
        """One line of text that leads no terminal astray."""
        self.assertFalse([c for c in text if unicodedata.category(c) in ('Cc', 'Cf')], text)

    def test_errors(self):
        for content, arguments, message in (
                ('', (), ':1: the file is empty'),
                ('a,b\n', (), ':1: there is no case'),
                ('a\r\n' * 50000 + '1,2\n', (), ':50001: the line has 2 fields'),
                ('a,b\r\n"x\r\ny",2\r\n\r\n3\r\n', (), ':5: the line has 1 field where the heading has 2'),
                ('a,b\n1,2\n"x\ny,2\n3,4\n', (), ':3: a quoted field that begins here'),
                ('a,b\n1,2\n3,x"y\n', (), ':3: a quotation mark'),
                ('a,b\n1,2\n\udcc0\udcaf,2\n', (), ':3: the text is not valid UTF-8'),
                ('a,b\n1,2\0\n', (), ': the file is not text'),
                ('a,a\n1,2\n', (), ":1: there are two variables named 'a'"),
                ('a,,c\n1,2,3\n', (), ':1: variable 2 has no name'),
                ('a,"\x1b[m\n\u202e\x9b"\n1,2\n', ('--by', 'A'), "there is no variable 'A'; there are: a,"),
                ('a,b\n1,2\n', ('--rows', 'a', '--layers', 'b,a'), "the variable 'a' is on the axes twice"),
                (None, (), '/none.csv: the file cannot be opened: No such')):
            with self.subTest(message=message):
                status, out, error = run(write(self.folder, content) if content is not None
                                         else '/none.csv', *arguments)
                self.assertEqual((status, out), (2, ''))
                self.assertIn(message, error)
                self.assert_harmless(error[:-1])

    def test_frames(self):
        """Random tables at random widths: even edges, no line over the page, no column lost."""
        def width(text):
            return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in 'WF' else 1
                       for c in text)

        for _ in range(25):
            words = ['a' + ''.join(random.choices('ab é\u0301漢\n\x07\u202e', k=random.randint(0, 13)))
                     for _ in range(5)]
            names = ['V' * random.randint(1, 20) + letter for letter in 'ABCD']
            path = write(self.folder, [names] + [
                [random.choice(words[:i + 1]) for i in range(4)] for _ in range(60)])
            axes, arguments = scatter(names)
            arguments += [path] + ['--skip-empty'] * random.randint(0, 1)
            page = random.randint(70, 160) + 90 * (len(axes[0]) > 2)
            narrow, wide = report(*arguments, '--width', page), report(*arguments, '--width', 9000)
            for out in (narrow, wide):
                self.assert_harmless(out.replace('\n', ''))
                for block in re.findall(r'(?:^[┌├│└].*\n)+', out, re.M):
                    self.assertEqual(len({width(line) for line in block.split('\n')[:-1]}), 1, block)
            self.assertLessEqual(max(width(line) for line in narrow.split('\n')), page)
            self.assertEqual(*(Counter(re.findall(r'(?<= )\d+(?:\.\d)?(?= )', out.partition('tion\n═')[2]))
                               for out in (narrow, wide)))


if __name__ == '__main__':
    print('seed', SEED)
    random.seed(SEED)
    unittest.main()
