# What browsers show of a box, and that they cost it nothing. How fast they are is measured by measure_pages.py.
# Arguments: orbe-view, orbe-recording, orbe-view with the modelled box, chromium, chromedriver.
import sys
import tempfile
import time
import unittest

from browser import start_browser
from measure_pages import measure
from view_program import PATIENCE, View

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
            cell = "document.getElementById('states').rows[2].cells[7]"
            self.wait(browser, f"return {cell}.textContent === 'locked' && !{cell}.classList.contains('bad')")
            view.tell("lose 2")
            self.wait(browser, f"return {cell}.textContent === 'open' && {cell}.classList.contains('bad')")
            # With its history.
            browser.execute_script("const select = document.getElementById('quantity'); select.value = 6;"
                                   "select.dispatchEvent(new Event('change'));")
            plotted = browser.execute_script("return orbeView.health().plotted")
            self.assertEqual((plotted[1][0], plotted[1][-1]), (1, 0), plotted)
            self.assertEqual({value for values in (plotted[0], plotted[2], plotted[3]) for value in values}, {1})

    def wait(self, browser, condition):
        end = time.monotonic() + PATIENCE
        while not browser.execute_script(condition):
            self.assertLess(time.monotonic(), end, condition)
            time.sleep(0.05)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[6:], verbosity=2)
