# How the streams of a box fare, and of a recording that plays one: what orbe-view tells of it to a page without a
# browser. Arguments: orbe-view, orbe-recording, orbe-view with the modelled box.
import math
import os
import sys
import tempfile
import unittest

from made_inputs import TTL_LINES, adc_counts, ttl
from view_program import Page, View, make_recording

VIEW, RECORDING, BOX_VIEW = sys.argv[1:4]

AP_UV = 1.2e6 / 1024 / 500  # a count, with the gain that probes are brought up with
RATE, ROW_GAPS, FRAME_GAPS, WRONG_TAGS, LOST, QUEUE, LINK = range(7)  # as a picture has them of a stream
ADC = 4


def ramp(channel, sample):
    return ((sample + channel) & 1023) - 512


class Health(unittest.TestCase):
    def open(self, program, *arguments):
        view = View(program, *arguments)
        self.addCleanup(self.end, view)
        page = Page(view)
        self.addCleanup(page.close)
        return view, page

    def end(self, view):
        code, _, errors = view.stop()
        self.assertEqual((code, errors), (0, ""))

    def lines(self, page, wanted):
        """The history of the health, as soon as it is as wanted."""
        head, _ = page.picture(lambda each: each.get("health") and wanted(each["health"]))
        # As long as no line is forgotten.
        self.assertLess(len(head["health"]), 240)
        self.assertEqual(head["health_sums"], [
            [self.sum_of_known(line["streams"][stream][quantity] for line in head["health"])
             for quantity in (ROW_GAPS, FRAME_GAPS, WRONG_TAGS, LOST)]
            + [any(line["streams"][stream][RATE] for line in head["health"])] for stream in range(5)])
        return head["health"]

    def sum_of_known(self, values):
        known = [value for value in values if value is not None]
        return sum(known) if known else None

    def behind(self, page, second):
        return self.lines(page, lambda lines: lines[-1]["seconds"] > second)

    def whole_traces(self, page, first):
        """The lowest values of each column, once none is missing: one port may be a little behind another."""
        head, blocks = page.picture(
            lambda each: each.get("traces", {}).get("first") == first and each["status"]["position"] > 0.1,
            self.lacks_nothing)
        return head, blocks["traces"][0::2]

    def lacks_nothing(self, blocks):
        return not any(map(math.isnan, blocks["traces"]))

    def sums(self, lines, stream):
        return [sum(line["streams"][stream][quantity] for line in lines)
                for quantity in (ROW_GAPS, FRAME_GAPS, WRONG_TAGS)]

    def test_box(self):
        view, page = self.open(BOX_VIEW, "--box")
        head, _ = page.picture(lambda each: "introduction" in each)
        what = head["introduction"]
        self.assertEqual((what["kind"], what["has_adc"], what["can_jump"]), ("box", True, False))
        self.assertEqual([probe["port"] for probe in what["probes"]], [1, 2, 3, 4])
        self.assertEqual({probe["serial"] for probe in what["probes"]}, {1234605616436508552})

        # What the probes send is what is shown.
        page.say({"view": {"port": 4, "first": 200, "count": 3, "seconds": 0.01, "columns": 300}})
        head, lowest = self.whole_traces(page, 200)
        step = head["traces"]["step"]
        self.assertAlmostEqual(step, 1 / 30000)
        first = round(head["traces"]["begin"] / step)
        columns = len(lowest) // 3
        self.assertGreaterEqual(columns, 300)
        offsets = {(round(lowest[lane * columns + column] / AP_UV) - ramp(200 + lane, first + column)) % 1024
                   for lane in range(3) for column in range(columns)}
        self.assertEqual(len(offsets), 1)
        # Over a second, in which nothing was lost.
        page.say({"view": {"port": 3}})
        _, blocks = page.picture(
            lambda each: each.get("channels", {}).get("port") == 3 and each["status"]["position"] > 1.1)
        self.assertAlmostEqual(blocks["rms"][100], 300 / math.sqrt(2) * AP_UV, delta=2)

        # Damage, where it is.
        lines = self.behind(page, 2.2)
        self.assertEqual(self.sums(lines, 0), [1, 1, 0])
        self.assertEqual(self.sums(lines, 1), [0, 0, 3])
        self.assertEqual(self.sums(lines, 2), [0, 0, 0])
        self.assertEqual(self.sums(lines, 3), [0, 0, 0])
        self.assertEqual(sum(line["streams"][ADC][ROW_GAPS] for line in lines), 1)
        self.assertEqual({line["streams"][ADC][quantity] for line in lines for quantity in (FRAME_GAPS, WRONG_TAGS, LINK)},
                         {None})
        # Once, when it was found; on a busy machine pictures may be behind that.
        self.assertEqual([line["streams"][0][ROW_GAPS] for line in lines if line["streams"][0][ROW_GAPS]], [1])
        self.assertEqual({line["streams"][port][LINK] for line in lines for port in range(4)}, {1})

        # A port whose link goes, and comes back.
        view.tell("lose 3")
        self.lines(page, lambda lines: lines[-1]["streams"][2][LINK] == 0 and lines[-1]["streams"][2][RATE] == 0)
        view.tell("regain 3")
        lines = self.lines(page, lambda lines: lines[-1]["streams"][2][LINK] == 1 and lines[-1]["streams"][2][RATE] > 0)
        links = [line["streams"][2][LINK] for line in lines]
        changes = [before for before, after in zip(links, links[1:] + [None]) if before != after]
        self.assertEqual(changes, [1, 0, 1])
        for port in (0, 1, 3):
            self.assertEqual({line["streams"][port][LINK] for line in lines}, {1})

    def test_ttl_lines_of_the_box(self):
        _, page = self.open(BOX_VIEW, "--box")
        page.say({"view": {"stream": "adc", "seconds": 0.06, "columns": 2000}})
        # Sample by sample, in stretches before and behind the frame that is lost, until each line has changed. In each
        # stretch a line may do so three times.
        stretch = 1800
        seen = [set() for _ in range(TTL_LINES)]
        for begin in range(0, 300_000, 7_000):
            head, blocks = page.picture(
                lambda each: each.get("traces", {}).get("seconds") == 0.06 and each["traces"]["begin"] * 30000 >= begin,
                lambda blocks: len(blocks["lost"]) == stretch and self.lacks_nothing(blocks))
            first = round(head["traces"]["begin"] * 30000)
            lanes = [blocks["traces"][2 * stretch * lane:2 * stretch * (lane + 1):2] for lane in range(12)]
            for place in range(0, stretch, 100):
                self.assertEqual([round(lanes[each][place] * 32768 / 5) for each in (0, 2, 4, 6)],
                                 [adc_counts(each, first + place) for each in (0, 2, 4, 6)])
            for line in range(TTL_LINES):
                self.assertEqual(lanes[8 + line], [ttl(line, first + place) for place in range(stretch)])
                seen[line] |= set(lanes[8 + line])
            if begin > 50_000 and all(levels == {0, 1} for levels in seen):
                break
        self.assertEqual(seen, [{0, 1}] * TTL_LINES)

    def test_box_is_left_alone_unless_that_is_allowed(self):
        _, page = self.open(BOX_VIEW, "--box")
        head, _ = page.picture(lambda each: each.get("status", {}).get("position", 0) > 0.2)
        positions = [head["status"]["position"]]

        # Time goes on from where it was, and never begins anew.
        def goes_on(head):
            self.assertTrue(head["status"]["streams"])
            self.assertGreaterEqual(head["status"]["position"], positions[-1])
            positions.append(head["status"]["position"])
            return positions[-1] > asked_at + 0.3

        for streams in (False, True, False):
            page.say({"streams": streams})
            self.assertEqual(page.answer(), "The box is not changed from here: orbe-view was started without --control.")
            asked_at = positions[-1]
            page.picture(goes_on)
        lines = self.behind(page, positions[-1])
        for line in lines:
            for stream in range(5):
                self.assertGreater(line["streams"][stream][RATE], 0)

    def test_box_that_fails_is_said_to_have_ended(self):
        view = View(BOX_VIEW, "--box", "--control")
        self.addCleanup(view.process.kill)
        page = Page(view)
        self.addCleanup(page.close)
        page.picture(lambda each: each.get("status", {}).get("streams"))
        page.say({"streams": False})
        page.picture(lambda each: "status" in each and not each["status"]["streams"])
        view.tell("close 2")
        page.say({"streams": True})
        head, _ = page.picture(lambda each: each.get("status", {}).get("problem"))
        self.assertFalse(head["status"]["streams"])
        self.assertRegex(head["status"]["problem"], r"^Nothing streams any more: the probes cannot be made ready \(")
        page.say({"streams": True})
        self.assertEqual(page.answer(), "There is no box to change.")
        code, counts, errors = view.stop()
        self.assertEqual((code, counts[2]), (0, 0))
        self.assertEqual(errors, f"orbe-view: {head['status']['problem']}\n")

    def test_simulation(self):
        with tempfile.TemporaryDirectory() as folder:
            recording = os.path.join(folder, "damaged.bin")
            make_recording(RECORDING, recording, "--seconds", "1.9", "--ports", "1,3",
                           "--fault", "lost-row:1@1560000", "--fault", "wrong-tag:1@2340000+3",
                           "--fault", "lost-row:rhd@90000+2")
            _, page = self.open(VIEW, "--simulation", recording)
            lines = self.behind(page, 1.5)
            self.assertEqual(self.sums(lines, 0), [1, 1, 3])
            self.assertEqual(self.sums(lines, 2), [0, 0, 0])
            self.assertEqual(sum(line["streams"][ADC][ROW_GAPS] for line in lines), 1)
            self.assertEqual([lines[0]["streams"][port][LINK] for port in range(4)], [1, 0, 1, 0])
            for line in lines:
                fills = [stream[QUEUE] for stream in line["streams"]]
                self.assertEqual([fill is None for fill in fills], [False, True, False, True, False])
                self.assertTrue(all(0 <= fill <= 1 for fill in fills if fill is not None), fills)
            self.assertEqual([lines[0]["streams"][port][ROW_GAPS] is None for port in range(4)], [False, True, False, True])

    def test_run_that_begins_anew_is_no_gap(self):
        with tempfile.TemporaryDirectory() as folder:
            recording = os.path.join(folder, "whole.bin")
            make_recording(RECORDING, recording, "--seconds", "1.9", "--ports", "2")
            _, page = self.open(VIEW, "--simulation", recording, "--control")
            page.picture(lambda each: each.get("status", {}).get("position", 0) > 0.2)
            page.say({"streams": False})
            page.picture(lambda each: not each["status"]["streams"])
            page.say({"streams": True}) # it plays from its beginning
            page.picture(lambda each: each["status"]["streams"])
            lines = self.behind(page, 1.1)
            self.assertEqual(self.sums(lines, 1), [0, 0, 0])
            self.assertEqual(sum(line["streams"][ADC][ROW_GAPS] for line in lines), 0)
            self.assertEqual(sum(line["streams"][1][LOST] for line in lines), 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2)
