# That the data of a place in a long recording are those of its time, counted from the beginning, whatever was lost before:
# read by a page over plain sockets. Arguments: orbe-view, orbe-recording.
import math
import os
import sys
import tempfile
import unittest

from view_program import Page, View, make_recording

VIEW, RECORDING = sys.argv[1:3]
UV = 1.2e6 / 1024 / 500


class Jump(unittest.TestCase):
    def test_lands_on_the_sample(self):
        with tempfile.TemporaryDirectory() as folder:
            recording = os.path.join(folder, "long.bin")
            # The probe's frame counter wraps at 2.7 s; before that 1000 super frames are lost. What is decoded for a
            # jump to 4 s begins behind that loss, far from the beginning of the file.
            make_recording(RECORDING, recording, "--seconds", "4.3", "--ports", "2", "--signal", "ramp", "--no-rhd",
                           "--fault", "lost-row:2@975000+65000")
            view = View(VIEW, recording)
            try:
                page = Page(view)
                page.say({"view": {"port": 2, "first": 10, "count": 3, "seconds": 0.01, "columns": 300}})
                head, _ = page.picture(lambda head: head.get("status", {}).get("known") == 1
                                       and head["status"]["length"] > 4)
                self.assertAlmostEqual(head["status"]["length"], 4.3, 6)
                for second in [4.0, 0.9, 3.2]:
                    page.say({"jump": {"seconds": second, "plays": False}})
                    end = round(second * 30000)

                    def is_there(head):
                        return ("traces" in head and abs(head["status"]["position"] - second) < 1e-6
                                and round(head["traces"]["begin"] * 30000) == end - 300)

                    _, blocks = page.picture(is_there, lambda blocks: not any(map(math.isnan, blocks["traces"])))
                    self.assertEqual(len(blocks["traces"]), 3 * 2 * 300)
                    for place, value in enumerate(blocks["traces"]):
                        lane, column = place // 600, place % 600 // 2
                        ramp = (end - 300 + column + 10 + lane + 256) % 1024 - 512
                        self.assertAlmostEqual(value / UV, ramp, 2, (second, lane, column))
                page.close()
            finally:
                code, counts, errors = view.stop()
            self.assertEqual((code, errors), (0, ""))
            # Each lost sample once, though two jumps have led there, with the rest of its block, which the decoder drops.
            self.assertGreaterEqual(counts[2], 1000)
            self.assertLess(counts[2], 1000 + 2 * 120)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
