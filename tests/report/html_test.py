"""Tests of the report's page, in a browser. Without one only the file is tested; exits with 77 then."""

import json
import os
import random
import stat
import subprocess
import sys
import tempfile
import unittest
from xml.etree import ElementTree

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    from selenium.webdriver.support.ui import Select
except ImportError:
    # Debian's package belongs to Debian's own interpreter.
    if sys.executable != '/usr/bin/python3' and os.path.exists('/usr/bin/python3'):
        os.execv('/usr/bin/python3', ['/usr/bin/python3', *sys.argv])
    webdriver = None

sys.dont_write_bytecode = True
from report_test import PENGUINS, PROGRAM, SEED, TITANIC, read, run, write  # noqa: E402

CHROMIUM, DRIVER = '/usr/bin/chromium', '/usr/bin/chromedriver'
BROWSER = bool(webdriver) and os.path.exists(CHROMIUM) and os.path.exists(DRIVER)
EVIL = '''</title></script><script>window.hit=1</script><img src=x onerror=window.hit=1>&amp;"' onload=1'''

# The texts of the visible table of a figure, each cell at every place that it spans.
GRID = '''
const rows = [...arguments[0].querySelectorAll('.layer:not([hidden]) tr')], grid = [];
let overlaps = 0;
rows.forEach((row, y) => {
  let x = 0;
  for (const cell of row.cells) {
    grid[y] = grid[y] || [];
    while (grid[y][x] !== undefined) ++x;
    for (let i = 0; i < cell.rowSpan; ++i) for (let k = 0; k < cell.colSpan; ++k) {
      grid[y + i] = grid[y + i] || [];
      if (grid[y + i][x + k] !== undefined) ++overlaps;
      const text = cell.cloneNode(true);
      text.querySelectorAll('sup').forEach(mark => mark.remove());
      grid[y + i][x + k] = text.textContent;
    }
  }
});
return [grid, overlaps, rows.length];'''


class FileTest(unittest.TestCase):
    def test_the_page_appears_whole_or_not_at_all(self):
        with tempfile.TemporaryDirectory() as folder:
            page = os.path.join(folder, 'page.html')
            link = os.path.join(folder, 'link.html')
            os.symlink('page.html', link)
            os.umask(0o022)
            open(page, 'w').close()
            self.assertEqual(run(TITANIC, '--html', link), (0, '', ''))
            self.assertTrue(os.path.islink(link))
            self.assertEqual(stat.S_IMODE(os.stat(page).st_mode), 0o644)
            with open(page, encoding='utf-8') as file:
                self.assertTrue(file.read().endswith('</html>\n'))
            before = os.stat(page).st_ino
            for target in (folder, '/dev/full', os.path.join(folder, 'none', 'page.html'),
                           os.path.join(page, 'page.html'), ''):
                status, out, error = run(TITANIC, '--html', target)
                self.assertEqual((status, out), (2, ''), target)
                self.assertIn(target, error)
            # Data that cannot be read leave the page of before.
            self.assertEqual(run(os.path.join(folder, 'none.csv'), '--html', page)[0], 2)
            self.assertEqual(os.stat(page).st_ino, before)
            # A disk that fills up half-way.
            script = f'ulimit -f 8; trap "" XFSZ; exec "{PROGRAM}" "{TITANIC}" --html "{page}"'
            full = subprocess.run(['bash', '-c', script], capture_output=True)
            self.assertEqual(full.returncode, 2)
            self.assertRegex(full.stderr.decode(), r'^report: .*page\.html: .+\n$')
            self.assertEqual(os.stat(page).st_ino, before)
            self.assertEqual(sorted(os.listdir(folder)), ['link.html', 'page.html'])


@unittest.skipUnless(BROWSER, 'no browser')
class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        options = webdriver.ChromeOptions()
        options.binary_location = CHROMIUM
        for argument in ('headless=new', 'no-sandbox', 'disable-gpu', 'disable-quic', 'no-first-run',
                         'disable-background-networking', 'disable-component-update',
                         'disable-sync', 'disable-dev-shm-usage', 'window-size=1300,900',
                         'force-prefers-reduced-motion', 'user-data-dir=' + cls.folder.name):
            options.add_argument('--' + argument)
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL'})
        cls.browser = webdriver.Chrome(service=Service(DRIVER), options=options)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def open(self, *arguments):
        path = os.path.join(self.folder.name, 'page.html')
        self.assertEqual(run(*arguments, '--html', path), (0, '', ''))
        self.browser.get('file://' + path)
        self.assertEqual(self.browser.get_log('browser'), [])

    def write(self, names, rows):
        return write(self.folder.name, names, rows)

    def find(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def figure(self, title):
        return next(f for f in self.find('figure') if title in
                    f.find_element(By.CSS_SELECTOR, '.title').get_attribute('textContent'))

    def grid(self, figure):
        """Spans fill every table as a rectangle, no place twice."""
        grid, overlaps, rows = self.browser.execute_script(GRID, figure)
        self.assertEqual((overlaps, len(grid)), (0, rows))
        self.assertEqual(len({len(row) for row in grid}), 1 if grid else 0)
        self.assertNotIn(None, sum(grid, []))
        return grid

    def test_layers_and_empty_rows(self):
        self.open(PENGUINS, '--rows', 'Species', '--columns', 'Sex', '--layers', 'Island')
        cases = [row for row in read(PENGUINS) if row['Sex'] != 'NA']
        figure = self.figure('Species by Sex by Island')
        menu = Select(figure.find_element(By.TAG_NAME, 'select'))
        skip = figure.find_element(By.CSS_SELECTOR, '.skip')
        self.assertEqual([o.text for o in menu.options], ['Biscoe', 'Dream', 'Torgersen', 'Total'])
        for skipping in (False, True, False):
            for island in ('Torgersen', 'Total', 'Biscoe'):
                menu.select_by_visible_text(island)
                here = [c for c in cases if island in ('Total', c['Island'])]
                grid = self.grid(figure)
                self.assertEqual(grid[1][2:], ['Female', 'Male', 'Total'])
                heads = figure.find_elements(By.CSS_SELECTOR, '.layer:not([hidden]) tbody [rowspan]')
                self.assertEqual([h.text for h in heads], list(dict.fromkeys(r[0] for r in grid[2:])))
                counts = {row[0]: row[2:] for row in grid if row[1] == 'Count'}
                species = {c['Species'] for c in (here if skipping else cases)}
                self.assertEqual(set(counts), species | {'Total'})
                for name, row in counts.items():
                    for sex, cell in zip(grid[1][2:], row):
                        n = sum(name in ('Total', c['Species']) and sex in ('Total', c['Sex'])
                                for c in here)
                        self.assertEqual(cell, str(n) if n else '')
            skip.send_keys(Keys.SPACE)
        self.assertEqual(len(figure.find_elements(By.CSS_SELECTOR, '.layer:not([hidden])')), 1)

    def test_a_layer_without_cells(self):
        path = self.write('GHKL', [['a', 'x', 'k', 'p'], ['b', 'y', 'k', 'q'], ['a', 'y', 'l', 'p']])
        self.open(path, '--rows', 'G', '--columns', 'H', '--layers', 'K,L', '--skip-empty')
        figure = self.figure('G by H by K by L')
        first, second = map(Select, figure.find_elements(By.TAG_NAME, 'select'))
        none = figure.find_element(By.CSS_SELECTOR, '.scroll > .none')
        first.select_by_visible_text('l')
        second.select_by_visible_text('q')
        self.assertTrue(none.is_displayed())
        self.assertEqual(self.grid(figure), [])
        figure.find_element(By.CSS_SELECTOR, '.skip').click()
        self.assertFalse(none.is_displayed())
        self.assertEqual(set(sum([row[2:] for row in self.grid(figure)[2:]], [])), {''})

    def test_outline_leads_to_every_item_and_folds(self):
        self.open(TITANIC, '--rows', 'Class,Sex', '--columns', 'Survived')
        for kind, part in (('.tree', 'split="Sex"'), ('.chart', '"values": [203, 118, 178, 212]'),
                           ('.model', 'value="Crew"><TargetValueCounts><TargetValueCount value="No" '
                                      'count="673"/>')):
            self.assertIn(part, self.find(kind + ' pre')[0].get_attribute('textContent'))
        links = self.find('.outline a')
        for link in links:
            item = self.browser.execute_script(
                'return document.querySelector(arguments[0].hash)', link)
            self.assertIn(link.get_attribute('textContent'), item.get_attribute('textContent'))
        for kind in 'heading page text table chart interactive model tree'.split():
            self.assertTrue(self.find('.outline .kind.' + kind), kind)
        toggle = self.find('.outline .toggle')[1]
        toggle.send_keys(Keys.ENTER)
        self.assertEqual(toggle.get_attribute('aria-expanded'), 'false')
        self.assertFalse(links[4].is_displayed())
        toggle.click()
        self.assertTrue(links[4].is_displayed())
        links[-1].click()
        self.assertEqual(self.browser.switch_to.active_element.get_attribute('id'),
                         self.find('figure')[-1].get_attribute('id'))

    def test_footnotes_lead_there_and_back(self):
        self.open(PENGUINS)
        for mark in self.find('main a.mark'):
            note = self.browser.execute_script(
                'return document.querySelector(arguments[0].hash)', mark)
            self.assertEqual(note.find_element(By.CSS_SELECTOR, '.marker').text, mark.text)
        mark = self.find('td a.mark')[1]
        mark.click()
        note = self.find(':target')[0]
        note.find_element(By.CSS_SELECTOR, '.back').click()
        self.assertEqual(self.browser.switch_to.active_element, mark)

    def test_data_are_text(self):
        path = self.write(['G' + EVIL, 'H', 'M', 'N'],
                          [[EVIL, 'x\r\ny', 1.5, 2], ['b', EVIL, 2.5, 4], ['b', '', '', 'NA']])
        self.open(path, '--title', EVIL, '--rows', 'G' + EVIL, '--columns', 'H', '--measures', 'M,N')
        self.assertIsNone(self.browser.execute_script('return window.hit'))
        self.assertEqual(self.browser.title, EVIL)
        self.assertEqual(len(self.find('script')), 1)
        self.assertEqual(len(self.find('img')), len(self.find('img[src^="data:image/svg+xml"]')))
        texts = [e.get_attribute('textContent') for e in self.find('th, h1, pre')]
        self.assertIn(EVIL, texts)
        # What is embedded can still be read by the programs that it is for.
        texts = [figure.find_element(By.TAG_NAME, 'pre').get_attribute('textContent')
                 for figure in self.find('.payload')]
        for text in texts[:2]:
            self.assertIn(json.dumps(EVIL), json.dumps(json.loads(text)))
        for text in texts[2:]:
            ElementTree.fromstring(text.encode())
        self.assertTrue(self.browser.execute_script('''return [...document.images].every(
            image => image.complete && image.naturalWidth > 300)'''))

    def test_without_scripts_every_layer_is_shown(self):
        disable = 'Emulation.setScriptExecutionDisabled'
        self.browser.execute_cdp_cmd(disable, dict(value=True))
        self.addCleanup(self.browser.execute_cdp_cmd, disable, dict(value=False))
        self.open(PENGUINS, '--skip-empty', '--rows', 'Species', '--columns', 'Sex', '--layers', 'Island')
        text = self.figure('Species by Sex by Island').text
        for island in ('Biscoe', 'Dream', 'Torgersen', 'Total'):
            self.assertEqual(text.count('Island: ' + island), 1)
        self.assertEqual(text.count('Count'), 12)

    def test_random_axes_fill_rectangles(self):
        for _ in range(6):
            names = ['V%d' % i for i in range(4)]
            path = self.write(names, [[random.choice('abc'[:i + 1] if i < 3 else ['', 'z'])
                                       for i in range(4)] for _ in range(20)] + [['a'] * 4])
            axes = [[], [], []]
            for name in names:
                random.choice(axes).append(name)
            arguments = [path] + ['--skip-empty'] * random.randint(0, 1)
            for option, axis in zip(('--rows', '--columns', '--layers'), axes):
                arguments += [option, ','.join(axis)] if axis else []
            self.open(*arguments)
            for figure in self.find('figure.table'):
                with self.subTest(seed=SEED, arguments=arguments):
                    self.grid(figure)

    def test_phone_and_dark(self):
        self.addCleanup(self.browser.execute_cdp_cmd, 'Emulation.clearDeviceMetricsOverride', {})
        self.browser.execute_cdp_cmd('Emulation.setDeviceMetricsOverride', dict(
            width=360, height=800, deviceScaleFactor=1, mobile=True))
        for scheme in ('light', 'dark'):
            self.browser.execute_cdp_cmd('Emulation.setEmulatedMedia', dict(
                features=[dict(name='prefers-color-scheme', value=scheme)]))
            self.open(PENGUINS)
            width = self.browser.execute_script('return document.documentElement.scrollWidth')
            self.assertEqual(width, 360)
            self.assertFalse(self.browser.execute_script(
                'return arguments[0].checkVisibility()', self.find('.outline a')[0]))
            # Every text stands out from what is behind it.
            self.assertEqual(self.browser.execute_script(CONTRAST), [], scheme)


CONTRAST = '''
const parse = color => color.match(/[\\d.]+/g).map(Number);
const light = color => parse(color).slice(0, 3).map(v => v / 255)
  .map(v => v <= 0.03928 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4)
  .reduce((sum, v, i) => sum + v * [0.2126, 0.7152, 0.0722][i], 0);
const behind = element => {
  for (; element; element = element.parentElement) {
    const color = getComputedStyle(element).backgroundColor, parts = parse(color);
    if (parts.length === 3 || parts[3] > 0) return color;
  }
};
return [...document.querySelectorAll('main *')]
  .filter(e => [...e.childNodes].some(n => n.nodeType === 3 && n.data.trim()))
  .filter(e => {
    const a = light(getComputedStyle(e).color), b = light(behind(e));
    return (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05) < 4.5;
  }).map(e => e.outerHTML.slice(0, 80));'''


if __name__ == '__main__':
    print('seed', SEED)
    random.seed(SEED)
    result = unittest.main(exit=False).result
    if not BROWSER:
        print('skipped: chromium, chromium-driver and python3-selenium are not all installed')
    sys.exit(0 if result.wasSuccessful() and BROWSER else 77 if result.wasSuccessful() else 1)
