"""Tests of the report program: what it writes against what is worked out here from the same files."""

import base64
import csv
import html
import json
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
from xml.etree import ElementTree

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


def scatter(names):
    """Lays variables on the axes at random; returns the axes and the arguments for them."""
    axes = {'--rows': [], '--columns': [], '--layers': []}
    for name in names:
        random.choice(list(axes.values())).append(name)
    return [*axes.values()], [text for option in axes if axes[option]
                              for text in (option, ','.join(axes[option]))]


def write(folder, names, rows, end='\n', encoding='utf-8'):
    path = os.path.join(folder, 'data.csv')
    with open(path, 'w', encoding=encoding, newline='') as file:
        csv.writer(file, lineterminator=end).writerows([names, *rows])
    return path


def number(text):
    try:
        return float(text) if math.isfinite(float(text)) else None
    except ValueError:
        return None


def key(value):
    """The order of categories: numbers by value, then texts by their bytes."""
    return number(value) is None, number(value) or 0, value.encode()


def width(text):
    return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in 'WF' else 1
               for c in text)


def percent(part, whole):
    return f'{100 * part / whole:.1f}'


def cramers_v(table):
    """Returns V and chi-square."""
    rows, columns = [sum(row) for row in table], [sum(column) for column in zip(*table)]
    expected = [row * column / sum(rows) for row in rows for column in columns]
    square = sum((n - e) ** 2 / e for n, e in zip(sum(table, []), expected) if e)
    freedom = min(len(rows) - rows.count(0), len(columns) - columns.count(0)) - 1
    return math.sqrt(square / sum(rows) / max(freedom, 1)), square


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
        weights = [number(case[weight]) or 0 if weight else 1 for case in cases]
        self.cases = [pair for pair in zip(cases, weights) if pair[1]]
        self.decimals = 2 * any(n % 1 for n in weights)

    def count(self, names, total=()):
        """Counts the combinations of values, "Total" standing for any."""
        counts = Counter()
        for case, weight in self.cases:
            values = [case[name] for name in names]
            for place in product(*((value, *total) for value in values)):
                counts[place] += weight * all(values)
        return counts

    def n(self, count):
        return f'{count:.{self.decimals}f}'

    def left_out(self, count, why):
        return f'{self.n(count)} case{"s" * (count != 1)} {why} left out.'

    def frequencies(self):
        for name in self.names:
            counts, lines, so_far = self.count([name]), [], 0
            valid, total = sum(counts.values()), sum(weight for _, weight in self.cases)
            for value in self.entries[name]:
                n = counts[value,]
                so_far += n
                lines.append(['Valid', value, self.n(n), percent(n, total), percent(n, valid),
                              percent(so_far, valid)])
            lines.append(['Valid', 'Total', self.n(valid), percent(valid, total), '100.0', ''])
            if valid < total:
                lines.append(['Missing', 'No value', self.n(total - valid) + '[a]',
                              percent(total - valid, total), '', ''])
            lines.append(['Total', self.n(total), '100.0', '', ''])
            note = '[a] Left out of the valid and the cumulative percentages.'
            yield [name], 1, lines, [note] * (valid < total)

    def crosstabulation(self):
        rows, columns, layers = self.axes
        places = [list(product(*(self.entries[name] + ['Total'] for name in axis))) for axis in self.axes]
        counts = self.count(self.names, ['Total'])
        left = sum(weight for case, weight in self.cases if not all(case[name] for name in self.names))
        kinds = ['Count'] + ['Row %'] * bool(columns) + ['Column %'] * bool(rows)
        for layer in places[2]:
            lines = [[*rows, '', *(column[-1] for column in places[1])]] if columns else []
            for row, kind in product(places[0], kinds):
                lines.append([*row, kind])
                for column in places[1]:
                    n = counts[row + column + layer]
                    whole = (row + places[1][-1] if kind == 'Row %' else places[0][-1] + column) + layer
                    lines[-1].append('' if not n else self.n(n) if kind == 'Count' else
                                     percent(n, counts[whole]))
            caption = 'Percentages are of the cases in the same row or column of the layer.'
            yield ([' by '.join(self.names) + '[a]' * (left > 0), *map(': '.join, zip(layers, layer))],
                   len(rows), lines, [caption] * (len(kinds) > 1) +
                   ['[a] ' + self.left_out(left, 'with a missing value')] * (left > 0))

    def descriptives(self):
        lines, notes = [], {}
        for measure, by in product(self.measures, self.entries[self.by] + ['Total']):
            group = [(number(case[measure]), weight) for case, weight in self.cases
                     if case[self.by] and by in (case[self.by], 'Total')]
            values = [pair for pair in group if pair[0] is not None]
            n = sum(weight for _, weight in values)
            lines.append([measure, by, self.n(n)])
            if len(values) < len(group):
                note = self.left_out(sum(weight for _, weight in group) - n, 'without a number')
                lines[-1][-1] += notes.setdefault(note, f'[{chr(ord("a") + len(notes))}]')
            mean = n and math.fsum(x * weight for x, weight in values) / n
            squares = math.fsum(weight * (x - mean) ** 2 for x, weight in values)
            places = max(len(text.partition('.')[2]) for text in self.entries[measure])
            lines[-1] += ['.'] * 4 if not n else [
                f'{mean:.{places + 2}f}',
                f'{math.sqrt(squares / (n - 1)):.{places + 2}f}' if n > 1 else '.',
                f'{min(values)[0]:.{places}f}', f'{max(values)[0]:.{places}f}']
        yield ([', '.join(self.measures) + ' by ' + self.by], 1, lines,
               [f'{mark} {note}' for note, mark in notes.items()])


class ReportTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def file(self, content):
        path = os.path.join(self.folder, 'file.csv')
        with open(path, 'wb') as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return path

    def assert_harmless(self, text):
        """One line of text that leads no terminal astray."""
        self.assertFalse([c for c in text if unicodedata.category(c) in ('Cc', 'Cf')], text)

    def assert_near(self, text, value):
        self.assertTrue(math.isclose(float(text), value, rel_tol=1e-6, abs_tol=1e-9), (text, value))

    def check_tables(self, path, twin, *arguments):
        found = [table for table in tables(report(path, '--ascii', '--width', 10000, *arguments))
                 if table[0][0] not in ('Notes', 'Case Processing Summary', 'Warnings')]
        wanted = [*twin.frequencies(), *twin.crosstabulation(), *twin.descriptives()]
        self.assertEqual([above for above, _, _ in found], [above for above, *_ in wanted])
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

    def check_charts(self, path, twin, *arguments):
        page = os.path.join(self.folder, 'page.html')
        report(path, '--html', page, *arguments)
        with open(page, encoding='utf-8') as file:
            page = file.read()
        chart, interactive, model, tree = map(html.unescape, re.findall('<pre.*?>([^<]*)</pre>', page))
        outcome = (twin.axes[1] or twin.names[-1:])[0]
        factors = [name for name in twin.names if name != outcome]

        # No more than 40 categories and 6 colours are drawn, the last one for the rest.
        chart = json.loads(chart)
        rows, columns = (entries if len(entries) <= most else entries[:most - 1] + ['Others']
                         for entries, most in ((twin.entries[factors[0]], 40), (twin.entries[outcome], 6)))
        values = Counter()
        for (row, column), n in twin.count([factors[0], outcome]).items():
            values[row if row in rows else 'Others', column if column in columns else 'Others'] += n
        self.assertEqual((chart['categories'], chart['series']), (rows, [
            dict(name=column, values=[values[row, column] for row in rows]) for column in columns]))
        drawing = ElementTree.fromstring(base64.b64decode(
            re.search('src="data:image/svg.xml;base64,([^"]*)"', page)[1], validate=True))
        bars = [rect for rect in drawing.findall('{*}rect') if rect.get('height') != '11']
        widths = [float(bar.get('width')) for bar in bars]
        self.assertEqual([bar.get('class') for bar in bars],
                         [f's{i}' for _ in rows for i in range(len(columns))])
        for width, place in zip(widths, product(rows, columns)):
            self.assertAlmostEqual(width, values[place] / max(values.values()) * max(widths), delta=0.2)
        tops = [float(bar.get('y')) for bar in bars]
        self.assertTrue(all(a + 18 <= b for a, b in zip(tops, tops[1:])))

        counts = twin.count(factors + [outcome])
        self.assertEqual(json.loads(interactive)['records'], [
            dict(at=list(place), count=counts[place])
            for place in product(*(twin.entries[name] for name in factors + [outcome])) if counts[place]])

        def check_counts(factor, factor_values, actual):
            counts = twin.count([factor, outcome], ['Total'])
            self.assertEqual(actual, [(*place, counts[place])
                                      for place in product(factor_values, twin.entries[outcome])])

        model, tree = ElementTree.fromstring(model.encode()), ElementTree.fromstring(tree.encode())
        for found in model.findall('.//{*}BayesInput'):
            factor = found.get('fieldName')
            check_counts(factor, twin.entries[factor], [
                (pair.get('value'), n.get('value'), float(n.get('count')))
                for pair in found for n in pair[0]])
        if len(twin.measures) > 1:
            pairs = [pair for case, weight in twin.cases for _ in range(int(2 * weight))
                     if None not in (pair := [number(case[name]) for name in twin.measures[1::-1]])]
            line = statistics.linear_regression(*zip(*pairs))
            for name, value in (('coefficient', line.slope), ('intercept', line.intercept),
                                ('r-squared', statistics.correlation(*zip(*pairs)) ** 2),
                                ('numOfRecordsWeighted', len(pairs) / 2)):
                self.assert_near(model.find(f'.//*[@{name}]').get(name), value)

        splits = {}
        for factor in factors:
            counts = twin.count([factor, outcome])
            splits[factor] = cramers_v([[counts[row, column] for column in twin.entries[outcome]]
                                        for row in twin.entries[factor]])
        factor = max(splits, key=lambda factor: splits[factor][0])
        self.assertEqual((tree.get('outcome'), tree.get('split')), (outcome, factor))
        self.assert_near(tree.get('cramersV'), splits[factor][0])
        self.assert_near(tree.get('chiSquare'), splits[factor][1])
        check_counts(factor, ['Total'] + twin.entries[factor], [
            (node.get('value', 'Total'), count.get('value'), float(count.get('n')))
            for node in tree.iter('node') for count in node.findall('count')])

    def test_numbers_agree_with_a_second_computation(self):
        words = ['10', '9', '9.0', '-1.5', '1e400', 'b', 'a', 'A b', 'Grüße', '漢字', 'a&b', '<i>',
                 '"q"', "it's", '\\', '', 'NA']
        for step in range(12):
            names, columns = ['G<&>', 'H "h"', "K'", 'L', 'X', 'Y', 'W'], [
                words, list(map(str, range(random.randint(30, 60)))) if step % 4 == 0 else words[:6],
                words[-7:], 'uvw', [*map(str, range(20)), '3.25', 'oops', '', 'NA'],
                [20000000, 20000000.25, 20000001.5], [0, .5, 1, 3]]
            rows = [list(map(random.choice, columns)) for _ in range(random.choice([20, 300]))]
            rows[:0] = [['a', '9', '<i>', 'u', 1.25, 2, 1], ['b', '10', "it's", 'v', 2, 3, 1]]
            path = write(self.folder, names, rows, random.choice(['\n', '\r\n', '\r']),
                         random.choice(['utf-8', 'utf-8-sig']))
            axes, arguments = scatter(random.sample(names[:4], 2 if step % 4 == 0 else 3))
            by, weight = random.choice(names[:4]), random.choice(['W', None])
            measures = random.sample('XY', random.randint(1, 2))
            arguments += ['--by', by, '--measures', ','.join(measures)] + ['--weight', 'W'] * bool(weight)
            with self.subTest(arguments=arguments):
                twin = Twin(path, axes, measures, by, weight)
                self.check_tables(path, twin, *arguments)
                self.check_charts(path, twin, *arguments)

    def test_variables_find_their_places(self):
        twin = Twin(PENGUINS, [['Species'], ['Sex'], ['Island']], [
            'Bill length (mm)', 'Bill depth (mm)', 'Flipper length (mm)', 'Body mass (g)'], 'Species')
        self.check_tables(PENGUINS, twin)
        self.check_charts(PENGUINS, twin)

    def test_charts_that_cannot_be_made_are_said_or_left_out(self):
        numbers, crossed = 'X,Y\n1.5,2\n1.5,3.5\n', 'G,H\na,\n,x\n'
        for content, arguments, items in (
                ('X\n1.5\n2.5\n', (), []),
                ('G\na\nb\n', (), ['[chart] G', '[interactive] G in every combination']),
                (numbers, (), ['[model] Regression of X on Y']),
                (numbers, ('--measures', 'Y,X'), ['Model left out:\nX does not vary where Y has a value.']),
                (crossed, ('--rows', 'G', '--columns', 'H'), [
                    'Bar chart left out:\nNo case has a value of every variable.',
                    '[interactive] H in every combination', '[model] Naive Bayes model of H',
                    'Tree left out:\nNo factor tells anything about H.'])):
            charts = report(self.file(content), *arguments).partition('\nCharts and Models\n')[2]
            self.assertEqual(charts.split('\n\n')[1:-1], items)

    def test_a_procedure_that_fails_leaves_the_rest(self):
        path = write(self.folder, 'GHTMWE', [
            ['ab'[i % 2], 'xyz'[i % 3], f'n{i}', i / 2 if i else '', -1 if i == 9 else 1, '']
            for i in range(5000)])
        arguments = [path, '--rows', 'G', '--columns', 'H']
        self.check_tables(path, Twin(path, [['G'], ['H'], []], ['M'], 'G'), *arguments[1:])
        titles = ['Frequencies', 'Crosstabulation', 'Descriptives', 'Charts and Models']
        for option, name, failed, message in (
                ('--measures', 'M,T', 'Descriptives', 'T holds no number.'),
                ('--layers', 'T', 'Crosstabulation', 'T has more than 4096 different values.'),
                ('--layers', 'E', 'Crosstabulation', 'E holds no value.'),
                ('--weight', 'E', 'Frequencies', 'No case has a weight.'),
                ('--weight', 'W', 'Frequencies', 'The weight variable W is negative in case 10.')):
            out = report(*arguments, option, name, '--ascii')
            parts = re.split(r'\n(%s)\n=+\n' % '|'.join(titles), out)
            self.assertEqual(parts[1::2], titles)
            sections = dict(zip(titles, parts[2::2]))
            self.assertIn(f'{failed} stopped:\n{message}\n', sections[failed])
            self.assertNotIn('Case Processing', sections[failed])
            self.assertRegex(sections[failed], r'Warnings\n(.*\n)+\| %s +\|' % re.escape(message))
            rest = sections['Crosstabulation' if failed == 'Descriptives' else 'Descriptives']
            self.assertEqual('Case Processing' in rest, option != '--weight')
            if option == '--layers':
                # The other frequency tables stand, the message in the place of this one.
                self.assertIn(f'{name}:\n{message}\n', sections['Frequencies'])
                self.assertIn('\nG\n+', sections['Frequencies'])

    def test_errors(self):
        pair = 'a,b\n1,2\n'
        for content, arguments, message in (
                (None, (), r'none\.csv: the file cannot be opened: No such'),
                ('', (), r':1: the file is empty'),
                ('a,b\n', (), r':1: there is no case'),
                ('a\r\n' * 50000 + '1,2\n', (), r':50001: the line has 2 fields'),
                ('a,b\r\n"x\r\ny",2\r\n\r\n3\r\n', (), r':5: the line has 1 field where the heading has 2'),
                (pair + '"x\ny,2\n3,4\n', (), r':3: a quoted field that begins here'),
                (pair + '3,x"y\n', (), r':3: a quotation mark'),
                (pair.encode() + b'\xff,2\n', (), r':3: the text is not valid UTF-8'),
                ('a,b\n1,2\0\n', (), r'the file is not text'),
                ('a,a\n1,2\n', (), r":1: there are two variables named 'a'"),
                ('a,,c\n1,2,3\n', (), r':1: variable 2 has no name'),
                ('a,"\x1b[m\n\u202e\x9b"\n1,2\n', ('--by', 'A'), r":1: there is no variable 'A'; there are: a"),
                (pair, ('--rows', 'a', '--layers', 'b,a'), r"'a' is on the axes twice"),
                (pair, ('--width', '3'), r'--width')):
            with self.subTest(message=message):
                path = os.path.join(self.folder, 'none.csv')
                status, out, error = run(path if content is None else self.file(content), *arguments)
                self.assertEqual((status, out), (2, ''))
                self.assertRegex(error, message)
                if '.csv:' in error:
                    self.assert_harmless(error[:-1])

    def test_frames(self):
        """Random tables at random widths: even edges, no line over the page, no column lost."""
        for _ in range(25):
            words = ['a' + ''.join(random.choices('ab é\u0301漢\n\x07\u202e', k=random.randint(0, 13)))
                     for _ in range(5)]
            names = ['V' * random.randint(1, 20) + letter for letter in 'ABCD']
            path = write(self.folder, names, [[random.choice(words[:i + 1]) for i in range(4)]
                                              for _ in range(60)])
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
