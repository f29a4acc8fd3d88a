"""Tests of the report's page, in a browser. Without one only the file is tested; exits with 77 then."""

import os
import random
import socket
import subprocess
import sys
import tempfile
import unittest
from itertools import product

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
from report_test import PENGUINS, PROGRAM, SEED, TITANIC, Twin, run, scatter, write  # noqa: E402

# Selenium asks for its driver by this name, which a minimal system may not have.
resolve = socket.getaddrinfo
socket.getaddrinfo = lambda host, *more, **named: resolve('127.0.0.1' if host == 'localhost' else host, *more, **named)

CHROMIUM, DRIVER = '/usr/bin/chromium', '/usr/bin/chromedriver'
BROWSER = bool(webdriver) and os.path.exists(CHROMIUM) and os.path.exists(DRIVER)
EVIL = '''</title></script><script>window.hit=1</script><img src=x onerror=window.hit=1>&amp;"' onload=1'''


class FileTest(unittest.TestCase):
    def test_the_page_appears_whole_or_not_at_all(self):
        with tempfile.TemporaryDirectory() as folder:
            page, link = os.path.join(folder, 'page.html'), os.path.join(folder, 'link.html')
            os.symlink('page.html', link)
            os.umask(0o022)
            open(page, 'w').close()
            self.assertEqual(run(TITANIC, '--html', link), (0, '', ''))
            self.assertEqual((os.path.islink(link), os.stat(page).st_mode & 0o777), (True, 0o644))
            with open(page, encoding='utf-8') as file:
                self.assertTrue(file.read().endswith('</html>\n'))
            before = os.stat(page).st_ino
            for data, target in ((TITANIC, folder), (TITANIC, '/dev/full'), (TITANIC, folder + '/none/p.html'),
                                 (TITANIC, page + '/p.html'), (TITANIC, ''), (folder + '/none.csv', page)):
                status, out, error = run(data, '--html', target)
                self.assertEqual((status, out), (2, ''), target)
                self.assertIn(target if data == TITANIC else data, error)
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
        for argument in ('headless=new', 'no-sandbox', 'disable-gpu', 'disable-background-networking',
                         'disable-dev-shm-usage', 'window-size=1300,900', 'force-prefers-reduced-motion',
                         'remote-debugging-pipe',  # the driver, too, asks for its browser by name
                         'user-data-dir=' + cls.folder.name):
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

    def find(self, selector, inside=None):
        return (inside or self.browser).find_elements(By.CSS_SELECTOR, selector)

    def figure(self, title):
        return next(figure for figure in self.find('figure')
                    if title in self.find('.title', figure)[0].get_attribute('textContent'))

    def grid(self, figure):
        """The cells in view, each at every place that it spans: they fill a rectangle, no place twice."""
        rows = self.browser.execute_script("""
            return [...arguments[0].querySelectorAll('.layer:not([hidden]) tr')].map(row =>
                [...row.cells].map(cell => [cell.textContent, cell.rowSpan, cell.colSpan]))""", figure)
        places = {}
        for y, row in enumerate(rows):
            x = 0
            for text, down, across in row:
                while (y, x) in places:
                    x += 1
                for place in product(range(y, y + down), range(x, x + across)):
                    self.assertNotIn(place, places)
                    places[place] = text
        wide = 1 + max([x for _, x in places], default=-1)
        self.assertEqual(sorted(places), list(product(range(len(rows)), range(wide))))
        return [[places[y, x] for x in range(wide)] for y in range(len(rows))]

    def test_layers_agree_with_a_second_computation(self):
        for _ in range(6):
            path = write(self.folder.name, ['KLMN', 'aaaa'] + [
                [random.choice(words) for words in ('a', 'ab', 'abc', ['', 'z'])] for _ in range(9)])
            axes, arguments = scatter('KLMN')
            skipping = random.choice([False, True])
            with self.subTest(seed=SEED, arguments=arguments):
                self.open(path, *arguments, *['--skip-empty'] * skipping)
                figure = self.figure(' by '.join(sum(axes, [])))
                menus, skip = [*map(Select, self.find('select', figure))], self.find('.skip', figure)
                for above, heads, lines, _ in Twin(path, axes, [], '').crosstabulation():
                    for menu, label in zip(menus, above[1:]):
                        menu.select_by_visible_text(label.partition(': ')[2])
                    if skip and random.choice([False, True]):
                        skip[0].send_keys(Keys.SPACE)
                        skipping = not skipping
                    if axes[0] and axes[1]:
                        lines[0][heads] = axes[0][-1]  # the last name reaches over the statistics
                    if skipping:
                        body = lines[bool(axes[1]):]
                        kept = [i for i in range(len(body[0])) if i <= heads or any(line[i] for line in body)]
                        lines = [[line[i] for i in kept] for line in lines
                                 if any(line[heads + 1:]) and len(kept) > heads + 1]
                    self.assertEqual(self.grid(figure)[-len(lines) or None:], lines)
                    self.assertEqual(self.find('.scroll > .none', figure)[0].is_displayed(), not lines)

    def test_hostile_data_are_text_in_a_page_that_works(self):
        path = write(self.folder.name, [
            ['G' + EVIL, 'H', 'M', 'N'], [EVIL, 'x', 1.5, 2], ['b', EVIL, 2.5, 4], ['b', '', '', 'NA']])
        self.open(path, '--title', EVIL, '--rows', 'G' + EVIL, '--columns', 'H', '--measures', 'M,N')
        self.assertIsNone(self.browser.execute_script('return window.hit'))
        self.assertEqual(self.browser.title, EVIL)
        self.assertEqual((len(self.find('script')), len(self.find('img'))), (1, 1))
        self.assertLess({EVIL, 'G' + EVIL}, {e.get_attribute('textContent') for e in self.find('th, h1')})
        self.assertTrue(self.browser.execute_script('return document.images[0].naturalWidth > 300'))

        def target(link):
            return self.browser.execute_script('return document.querySelector(arguments[0].hash)', link)

        links = self.find('.outline a')
        for link in links:
            self.assertIn(link.get_attribute('textContent'), target(link).get_attribute('textContent'))
        toggle = self.find('.outline .toggle')[1]
        toggle.send_keys(Keys.ENTER)
        self.assertEqual(toggle.get_attribute('aria-expanded'), 'false')
        self.assertFalse(links[4].is_displayed())
        toggle.click()
        self.assertTrue(links[4].is_displayed())
        links[-1].click()
        self.assertEqual(self.browser.switch_to.active_element, self.find('figure')[-1])

        for mark in self.find('main a.mark'):
            self.assertEqual(self.find('.marker', target(mark))[0].text, mark.text)
        mark = self.find('td a.mark')[1]
        mark.click()
        self.find(':target .back')[0].click()
        self.assertEqual(self.browser.switch_to.active_element, mark)

    def test_a_phone_with_and_without_scripts(self):
        command = self.browser.execute_cdp_cmd
        self.addCleanup(command, 'Emulation.clearDeviceMetricsOverride', {})
        self.addCleanup(command, 'Emulation.setScriptExecutionDisabled', dict(value=False))
        command('Emulation.setDeviceMetricsOverride',
                dict(width=360, height=800, deviceScaleFactor=1, mobile=True))
        for disabled in (True, False):
            command('Emulation.setScriptExecutionDisabled', dict(value=disabled))
            self.open(PENGUINS, '--skip-empty')
            text = self.figure('Species by Sex by Island').text
            self.assertEqual((text.count('Island: '), text.count('Count')), (4, 12) if disabled else (1, 3))
        self.assertEqual(self.browser.execute_script('return document.documentElement.scrollWidth'), 360)
        self.assertFalse(self.browser.execute_script(
            'return arguments[0].checkVisibility()', self.find('.outline a')[0]))


if __name__ == '__main__':
    print('seed', SEED)
    random.seed(SEED)
    result = unittest.main(exit=False).result
    if not BROWSER:
        print('skipped: chromium, chromium-driver and python3-selenium are not all installed')
    sys.exit(0 if result.wasSuccessful() and BROWSER else 77 if result.wasSuccessful() else 1)
