# That the widest pictures, as often as a page can get them, cost four probes and the ADC inputs at the box's pace nothing: a
# page without a browser asks for them. Arguments: orbe-view, orbe-recording.
import os
import sys
import tempfile
import threading
import time
import unittest

from view_program import PATIENCE, Page, View, make_recording

VIEW, RECORDING = sys.argv[1:3]

LOST, QUEUE = 4, 5 # as a picture has them of a stream
SECONDS = 3


class Asking_Page:
    """Asks for its picture anew 25 times a second, and takes what comes."""

    def __init__(self, view, request):
        self.page = Page(view)
        self.request = request
        self.pictures = 0
        self.failure = None
        self.ends = threading.Event()
        self.threads = [threading.Thread(target=self.ask), threading.Thread(target=self.take)]
        for thread in self.threads:
            thread.start()

    def ask(self):
        while not self.ends.wait(0.04):
            self.page.say({"view": self.request})

    def take(self):
        try:
            while not self.ends.is_set():
                kind, payload = self.page.receive()
                if kind == 8:
                    raise AssertionError(f"the page was put out: {payload!r}")
                self.pictures += kind == 2
        except Exception as failure: # told by the test
            self.failure = failure

    def end(self):
        self.ends.set()
        for thread in self.threads:
            thread.join()
        self.page.close()


class Wide_Pictures(unittest.TestCase):
    def test_cost_the_streams_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            recording = os.path.join(folder, "full.bin")
            make_recording(RECORDING, recording, "--seconds", str(SECONDS))
            view = View(VIEW, "--simulation", recording)
            # Bins of all that is remembered, and whole rows of all that is still there as rows.
            widest = [Asking_Page(view, {"port": port, "count": 96, "columns": 2000, "seconds": seconds})
                      for port, seconds in [(1, 30), (4, 1.9)]]
            try:
                page = Page(view)
                end = time.monotonic() + PATIENCE
                lines = []
                while not lines or lines[-1]["seconds"] < SECONDS - 0.6:
                    self.assertLess(time.monotonic(), end, lines)
                    head, _ = page.picture(lambda each: each.get("health"))
                    lines = head["health"]
                page.close()
            finally:
                for each in widest:
                    each.end()
                code, counts, errors = view.stop()
            self.assertEqual([each.failure for each in widest], [None, None])
            self.assertEqual((code, errors), (0, ""))
            self.assertEqual(counts[2], 0)
            for stream in range(5):
                self.assertEqual(sum(line["streams"][stream][LOST] for line in lines), 0, lines)
                self.assertLess(max(line["streams"][stream][QUEUE] for line in lines), 0.5, lines)
            for each in widest:
                self.assertGreater(each.pictures, 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
