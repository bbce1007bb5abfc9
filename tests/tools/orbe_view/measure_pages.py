# What three pages cost while the box, played by a recording, sends at its pace: two that keep up and one that never
# takes anything. Prints figures and asserts nothing but that nothing is lost. Arguments: orbe-view, orbe-recording, how
# many seconds, and for pages in browsers instead of plain sockets --browsers chromium chromedriver.
import argparse
import contextlib
import os
import tempfile
import threading
import time

from view_program import Page, View, make_recording, wait_until


class Socket_Pages:
    """Two pages that keep up with one that never takes anything, over plain sockets."""

    def __init__(self, view):
        self.stalled = Page(view, buffer=4096)
        self.stalled.say({"view": {"port": 1, "count": 96, "columns": 2000}})
        self.pages = [Page(view) for _ in range(2)]
        for port, page in enumerate(self.pages, 1):
            page.say({"view": {"port": port, "count": 16, "columns": 1000}})
        self.pages[0].picture(lambda head: "traces" in head)

    def look(self, seconds):
        """Pictures a second of each page that keeps up."""
        counts = [0, 0]
        begin = time.monotonic()

        def look(place):
            while time.monotonic() < begin + seconds:
                kind, _ = self.pages[place].receive()
                counts[place] += kind == 2

        threads = [threading.Thread(target=look, args=(place,)) for place in range(2)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        passed = time.monotonic() - begin
        return [count / passed for count in counts]

    def close(self):
        for page in [self.stalled, *self.pages]:
            page.close()


class Browser_Pages:
    """The same in three browsers, of which one stands still while the others are looked at."""

    def __init__(self, browsers, view):
        self.browsers = browsers
        for port, browser in enumerate(browsers, 1):
            browser.get(view.address)
            self.wait(browser, "return window.orbeView && orbeView.pictures() > 0")
            browser.execute_script(f"document.querySelector('input[name=port][value=\"{port}\"]').click()")
            self.wait(browser, f"return orbeView.traces().port === {port}")
        # So large that no buffer on its way holds many of them.
        browsers[0].execute_script("const count = document.getElementById('count'); count.value = 96;"
                                   "count.dispatchEvent(new Event('change'));")
        self.wait(browsers[0], "return orbeView.traces().lanes.length === 96")

    def wait(self, browser, condition):
        wait_until(lambda: browser.execute_script(condition), lambda: condition)

    def look(self, seconds):
        from browser import Stalled # takes Selenium, which plain sockets do without

        look = "return [orbeView.pictures(), performance.now()]"
        with Stalled(self.browsers[0]):
            before = [browser.execute_script(look) for browser in self.browsers[1:]]
            time.sleep(seconds)
            after = [browser.execute_script(look) for browser in self.browsers[1:]]
        return [(now[0] - then[0]) / (now[1] - then[1]) * 1000 for then, now in zip(before, after)]

    def close(self):
        for browser in self.browsers:
            browser.get("about:blank")


def start_three(browsers, folder, stack):
    from browser import start_browser

    started = []
    for number in range(3):
        started.append(start_browser(*browsers, os.path.join(folder, str(number)), (1200, 800)))
        stack.callback(started[-1].quit)
    return started


def measure(view_program, recording_program, seconds, browsers=None):
    """What the pages get and what that costs. The recording begins when all pages are there."""
    with contextlib.ExitStack() as stack:
        folder = stack.enter_context(tempfile.TemporaryDirectory())
        recording = os.path.join(folder, "full.bin")
        make_recording(recording_program, recording, "--seconds", str(seconds + 1.5), "--signal", "spikes")
        started = start_three(browsers, folder, stack) if browsers else []
        view = View(view_program, "--simulation", recording, "--control")
        try:
            page = Page(view)
            page.say({"streams": False})
            page.picture(lambda head: not head.get("status", {"streams": True})["streams"])
            pages = Browser_Pages(started, view) if browsers else Socket_Pages(view)
            page.say({"streams": True})
            page.picture(lambda head: head.get("status", {}).get("streams") and head["status"]["position"] > 0.1)
            page.close()
            begin, cpu_before = time.monotonic(), view.cpu_seconds()
            rates = pages.look(seconds)
            cpu = (view.cpu_seconds() - cpu_before) / (time.monotonic() - begin)
            page = Page(view)
            head, _ = page.picture(lambda each: each.get("health"))
            page.close()
            pages.close()
        finally:
            code, counts, errors = view.stop()
        streams = [stream for line in head["health"] for stream in line["streams"]]
        return {
            "rates": rates,
            "cpu": cpu,
            "seconds": head["health"][-1]["seconds"],
            "shown": counts[0],
            "left_out": counts[1],
            "fullest": max(stream[5] for stream in streams if stream[5] is not None),
            "lost": counts[2] + sum(sum(filter(None, sums[:4])) for sums in head["health_sums"]),
            "failure": (code, errors) if code != 0 or errors else None,
        }


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("view")
    parser.add_argument("recording")
    parser.add_argument("seconds", type=float, nargs="?", default=5.0)
    parser.add_argument("--browsers", nargs=2, metavar=("chromium", "chromedriver"))
    arguments = parser.parse_args()
    got = measure(arguments.view, arguments.recording, arguments.seconds, arguments.browsers)
    print("pictures a second of the pages that keep up: " + ", ".join(f"{rate:.1f}" for rate in got["rates"]))
    print(f"pictures shown {got['shown']}, left out for the stalled page and others that were slow {got['left_out']}")
    print(f"CPU time of orbe-view for a second: {got['cpu']:.3f} s")
    print(f"fullest queue {got['fullest']:.3f}; samples, rows, frames and tags lost or wrong: {got['lost']:.0f}")
    print(f"the machine's load, of {os.cpu_count()} cores: {os.getloadavg()[0]:.1f}")
    if got["lost"] or got["failure"]:
        raise SystemExit(f"something is lost, or went wrong: {got}")


if __name__ == "__main__":
    main()
