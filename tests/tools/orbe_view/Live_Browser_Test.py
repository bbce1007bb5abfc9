# What browsers show of a box, and that they cost it nothing. How fast they are is measured by measure_pages.py.
# Arguments: orbe-view, orbe-recording, orbe-view with the modelled box, chromium, chromedriver.
import sys
import tempfile
import unittest

from browser import start_browser
from measure_pages import measure
from view_program import View, wait_until

VIEW, RECORDING, BOX_VIEW, CHROMIUM, DRIVER = sys.argv[1:6]
SECONDS = 3


class Live_Browser(unittest.TestCase):
    # Four ports and the ADC inputs at the box's pace, while three browsers look, one of which stands still.
    def test_browser_that_stands_still_costs_nothing(self):
        got = measure(VIEW, RECORDING, SECONDS, (CHROMIUM, DRIVER))
        self.assertEqual((got["lost"], got["failure"]), (0, None), got)
        self.assertGreater(got["seconds"], SECONDS / 2)
        self.assertGreater(got["left_out"], 0, "one of the browsers did stand still")
        for rate in got["rates"]:
            self.assertGreater(rate, 0, got)

    def test_link_that_is_lost_is_seen(self):
        with tempfile.TemporaryDirectory() as folder:
            browser = start_browser(CHROMIUM, DRIVER, folder, (1200, 800))
            self.addCleanup(browser.quit)
            view = View(BOX_VIEW, "--box")
            self.addCleanup(view.stop)
            browser.get(view.address)
            self.wait(browser, "return window.orbeView && orbeView.health().lines.length > 0")
            self.assertEqual(browser.execute_script("return document.getElementById('source').textContent"), "box (box)")
            link = "document.getElementById('states').rows[2].cells[7]"
            self.wait(browser, f"return {link}.textContent === 'locked' && !{link}.classList.contains('bad')")
            browser.execute_script("document.querySelector('input[name=port][value=\"2\"]').click()")
            self.wait(browser, "return orbeView.channels()?.port === 2 && orbeView.channels().rms[100] > 0")
            self.wait_for_map(browser, is_silent=False)
            rate = "document.getElementById('states').rows[2].cells[1]"
            self.assertFalse(browser.execute_script(f"return {rate}.classList.contains('bad')"))
            view.tell("lose 2")
            self.wait(browser, f"return {link}.textContent === 'open' && {link}.classList.contains('bad')")
            # Nothing comes any more: what was there last is no state of now.
            self.wait(browser, f"return {rate}.textContent === '0' && {rate}.classList.contains('bad')")
            self.wait_for_map(browser, is_silent=True)
            title = "document.getElementById('spectrum-title').textContent"
            self.wait(browser, f"return {title} === 'Spectrum: port 2, channel 0, AP: no data'")
            self.assertEqual(browser.execute_script("return orbeView.spectrum().values"), [])
            others = "[1, 3, 4].map((row) => document.getElementById('states').rows[row].cells[1].classList.contains('bad'))"
            self.assertEqual(browser.execute_script(f"return {others}"), [False] * 3)
            # With its history.
            browser.execute_script("const select = document.getElementById('quantity'); select.value = 6;"
                                   "select.dispatchEvent(new Event('change'));")
            plotted = browser.execute_script("return orbeView.health().plotted")
            self.assertEqual((plotted[1][0], plotted[1][-1]), (1, 0), plotted)
            self.assertEqual({value for values in (plotted[0], plotted[2], plotted[3]) for value in values}, {1})
            view.tell("regain 2")
            self.wait(browser, f"return {rate}.textContent !== '0' && !{rate}.classList.contains('bad')")
            self.wait_for_map(browser, is_silent=False)
            self.wait(browser, f"return {title}.startsWith('Spectrum: port 2, channel 0, AP; highest at ')")

    def wait_for_map(self, browser, is_silent):
        """Of port 2: without data every field is grey, no bar is there, and words say so on the map and below it."""
        self.wait(browser, f"return document.getElementById('channel').textContent === 'Port 2: no data' === {str(is_silent).lower()}")
        greys, bars, words = browser.execute_script("""
            const canvas = document.getElementById('map'), ratio = canvas.width / canvas.clientWidth;
            const context = canvas.getContext('2d');
            const of = (name) => {
                const number = parseInt(getComputedStyle(document.documentElement).getPropertyValue('--' + name).trim().slice(1), 16);
                return [number >> 16, number >> 8 & 255, number & 255];
            };
            const is = (pixel, at, colour) => colour.every((value, i) => Math.abs(pixel[at + i] - value) < 30) && pixel[at + 3] > 100;
            let greys = 0;
            for (let channel = 20; channel < 360; channel += 20) {
                const { x, y } = orbeView.channelPlace(channel);
                greys += is(context.getImageData(x * ratio, y * ratio, 1, 1).data, 0, of('line')) ? 1 : 0;
            }
            const left = Math.ceil(canvas.width * 0.54) + 2;
            const right = context.getImageData(left, 0, canvas.width - left, canvas.height - 40 * ratio).data;
            const count = (colour) => {
                let pixels = 0;
                for (let at = 0; at < right.length; at += 4) pixels += is(right, at, colour) ? 1 : 0;
                return pixels;
            };
            return [greys, count(of('bar')), count(of('ink'))];""")
        self.assertEqual(greys, 17 if is_silent else 0)
        self.assertEqual(bars == 0, is_silent, bars)
        self.assertEqual(words > 20, is_silent, words)

    def wait(self, browser, condition):
        wait_until(lambda: browser.execute_script(condition), lambda: condition)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[6:], verbosity=2)
