# What a browser shows of recordings whose content is known: the numbers are read back from what the page has plotted,
# and held against what was put in. Arguments: orbe-view, orbe-recording, orbe-record, chromium, chromedriver.
import csv
import json
import math
import os
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import unittest

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.actions.wheel_input import ScrollOrigin
from selenium.webdriver.common.keys import Keys

from browser import start_browser
from made_inputs import adc_counts, ttl, ttl_change
from view_program import PATIENCE, View, make_recording, wait_until

VIEW, RECORDING, RECORD, CHROMIUM, DRIVER = sys.argv[1:6]

AP_UV = 1.2e6 / 1024 / 500  # a count, with the gains that recordings without a description are taken to have
LFP_UV = 1.2e6 / 1024 / 250
TONE_HZ = 40 * 30000 / 1024


def tone(channel, sample):
    """Port 1's, in counts."""
    return 300 * math.sin(2 * math.pi * (sample * TONE_HZ / 30000 + channel / 384))


def ramp(channel, sample):
    return ((sample + channel) & 1023) - 512


def gaps_of(folder, stream):
    """Sample and length of each, as the folder's table has them."""
    with open(os.path.join(folder, "gaps.csv"), encoding="ascii") as file:
        return [(int(gap["sample"]), int(gap["length"])) for gap in csv.DictReader(file) if gap["stream"] == stream]


class Browser(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.recording = os.path.join(cls.folder.name, "known.bin")
        # Rows of port 1 come 1,950,000 a second: one is lost 0.8 s from the beginning, and three words have a wrong tag
        # at 1.6 s.
        make_recording(RECORDING, cls.recording, "--seconds", "2.2", "--ports", "1,3", "--tone-bin", "40",
                       "--signal", "tone:100", "--signal", "ramp:200-215", "--signal", "spikes:300-310",
                       "--fault", "lost-row:1@1560000", "--fault", "wrong-tag:1@3120000+3")
        cls.driver = start_browser(CHROMIUM, DRIVER, cls.folder.name, (1200, 800))
        cls.driver.set_script_timeout(PATIENCE)

    @classmethod
    def tearDownClass(cls):
        cls.driver.quit()
        cls.folder.cleanup()

    def open(self, *arguments, complaint=""):
        """The program, which complains about what matches `complaint`."""
        view = View(VIEW, *arguments)
        self.addCleanup(self.end, view, complaint)
        self.driver.get(view.address)
        self.wait("window.orbeView && orbeView.introduction() && orbeView.status()")
        return view

    def end(self, view, complaint):
        self.assertEqual([entry for entry in self.driver.get_log("browser") if entry["level"] == "SEVERE"], [])
        self.driver.get("about:blank")
        code, _, errors = view.stop()
        self.assertEqual(code, 0)
        self.assertRegex(errors, f"^{complaint}$")

    def run_script(self, script):
        return self.driver.execute_script("return " + script)

    def run_module(self, script):
        """What a script answers that takes parts of the page by themselves."""
        got = self.driver.execute_async_script(
            f"const done = arguments[0]; (async () => {{ {script} }})().then(done, (error) => done({{ error: String(error) }}));")
        self.assertFalse(isinstance(got, dict) and "error" in got, got)
        return got

    def wait(self, condition, value=None):
        """What the condition says in the page, once it is true, or the value."""
        got = None

        def is_so():
            nonlocal got
            got = self.run_script(condition)
            return got if value is None else got == value

        wait_until(is_so, lambda: f"{condition}: {got!r} instead of {value!r}; {self.run_script('orbeView.status()')}")
        return got

    def press(self, keys):
        ActionChains(self.driver).send_keys(keys).perform()

    def enter(self, field, value):
        element = self.driver.find_element(By.ID, field)
        element.send_keys(Keys.CONTROL + "a", Keys.NULL, str(value), Keys.ENTER)
        self.run_script("document.activeElement.blur()")

    def choose(self, field, value):
        self.driver.find_element(By.CSS_SELECTOR, f"#{field} option[value='{value}']").click()
        self.run_script("document.activeElement.blur()")

    def hold_at(self, second):
        """Jumps there and stays."""
        if not self.run_script("orbeView.view().paused"):
            self.press(" ")
            self.wait("orbeView.view().paused", True)
        self.enter("second", second)
        self.wait(f"Math.abs(orbeView.status().position - {second}) < 1e-4", True)

    def traces(self, first, count, window):
        """The lanes as they are plotted, once they end where the recording is held and are there in whole."""
        self.enter("count", count)
        self.enter("first", first)
        self.choose("window", window)
        self.wait(f"""(() => {{
            const shown = orbeView.traces(), status = orbeView.status(), asked = orbeView.view();
            const last = shown.times.at(-1) + shown.step / 2;
            return shown.stream === asked.stream && (asked.stream === "adc" || shown.first === {first})
                && shown.lanes.length === {count} && Math.abs(last - status.position) <= shown.step + 1e-6
                && last - shown.times[0] < {window} * 1.2 && shown.lanes[0].at(2) !== null
                && shown.lanes.every((lane) => lane.at(-3) !== null);
        }})()""", True)
        return self.run_script("orbeView.traces()")

    def test_tone_and_ramp_are_plotted_sample_by_sample(self):
        self.open(self.recording)
        self.hold_at(1.25)
        for first, count, signal in [(100, 1, tone), (200, 16, ramp)]:
            shown = self.traces(first, count, 0.01)
            self.assertAlmostEqual(shown["step"], 1 / 30000, 9)
            self.assertEqual(len(shown["times"]), 600)
            for lane, values in enumerate(shown["lanes"]):
                for place in range(0, 600, 2):
                    sample = round(shown["times"][place] * 30000)
                    counts = [values[place] / AP_UV, values[place + 1] / AP_UV]
                    self.assertAlmostEqual(counts[0], counts[1], 2)
                    self.assertLessEqual(abs(counts[0] - signal(first + lane, sample)), 1.01 if signal is tone else 0.01,
                                         (first + lane, sample))

    def test_lfp_is_plotted_with_its_own_rate_and_gain(self):
        self.open(self.recording)
        self.hold_at(1.0)
        self.press("l")
        shown = self.traces(200, 4, 0.05)
        self.assertAlmostEqual(shown["step"], 1 / 2500, 9)
        for lane, values in enumerate(shown["lanes"]):
            for place in range(2, len(values) - 2, 2):
                sample = round(shown["times"][place] * 2500)
                self.assertAlmostEqual(values[place] / LFP_UV, ramp(200 + lane, sample), 2)

    def test_wide_windows_show_the_extremes(self):
        self.open(self.recording)
        self.hold_at(1.25)
        shown = self.traces(100, 1, 0.2)
        values = shown["lanes"][0]
        columns = [(values[i], values[i + 1]) for i in range(2, len(values) - 2, 2) if values[i] is not None]
        self.assertGreater(len(columns), 100)
        steps = round(shown["step"] * 30000)
        self.assertGreater(steps, 1)
        for place, (low, high) in enumerate(columns):
            begin = round(shown["times"][2 * place + 2] * 30000)
            expected = [tone(100, sample) for sample in range(begin, begin + steps)]
            self.assertLessEqual(abs(low / AP_UV - min(expected)), 1.01)
            self.assertLessEqual(abs(high / AP_UV - max(expected)), 1.01)

    def test_adc_and_ttl_inputs(self):
        self.open(self.recording)
        self.hold_at(1.0)
        self.press("d")
        shown = self.traces(0, 12, 0.01)
        self.assertEqual(shown["labels"], [f"ADC {i}" for i in range(8)] + [f"TTL {i}" for i in range(1, 5)])
        for line in range(4):
            # Where the line changes, in the middle of the window.
            change = ttl_change(line, 25000)
            self.hold_at((change + 150) / 30000)
            shown = self.traces(0, 12, 0.01)
            samples = [round(time * 30000) for time in shown["times"][::2]]
            self.assertEqual(samples, list(range(change - 150, change + 150)))
            for lane in range(0, 8, 2):
                for sample, value in zip(samples, shown["lanes"][lane][::2]):
                    self.assertAlmostEqual(value * 32768 / 5, adc_counts(lane, sample), 2)
            for lane in range(4):
                expected = [ttl(lane, sample) for sample in samples]
                self.assertEqual(shown["lanes"][8 + lane][::2], expected, (line, lane))
                self.assertEqual(shown["lanes"][8 + lane][1::2], expected, (line, lane))
            self.assertEqual(set(shown["lanes"][8 + line]), {0, 1})

    def test_channels_along_the_probe(self):
        self.open(self.recording)
        self.hold_at(1.5)
        # Once the whole second before is there.
        self.wait(f"""(() => {{
            const shown = orbeView.channels();
            return shown !== null && Math.abs(shown.rms[100] - {300 / math.sqrt(2) * AP_UV}) <= 2
                && Math.abs(shown.rms[205] - {1024 / math.sqrt(12) * AP_UV}) <= 10
                && shown.spikes.slice(300, 311).every((rate) => Math.abs(rate - 20) <= 1.5);
        }})()""", True)
        # A click on a channel's field chooses it.
        place = self.run_script("orbeView.channelPlace(100)")
        canvas = self.driver.find_element(By.ID, "map")
        size = canvas.size
        ActionChains(self.driver).move_to_element_with_offset(
            canvas, round(place["x"] - size["width"] / 2), round(place["y"] - size["height"] / 2)).click().perform()
        self.wait("orbeView.view().selected", 100)
        self.wait("document.getElementById('channel').textContent.includes('Channel 100, electrode 100: 49')")
        # Its spectrum has the tone, and says so.
        self.wait(f"Math.abs(orbeView.spectrum().peak - {TONE_HZ}) <= 30000 / 2048", True)
        self.wait("document.getElementById('spectrum-title').textContent.includes('channel 100, AP; highest at 117')")
        self.wait("orbeView.traces().first", 92)
        # The bars are as long as the values are large, whatever their colour.
        self.press("h")
        self.wait("document.getElementById('channel').textContent.includes('spikes/s')")
        ink = self.run_script("""(() => {
            const canvas = document.getElementById('map'), ratio = canvas.width / canvas.clientWidth;
            const length = (channel) => {
                const y = (orbeView.channelPlace(channel).y) * ratio;
                const row = canvas.getContext('2d').getImageData(canvas.width * 0.54, y, canvas.width * 0.46, 1).data;
                let pixels = 0;
                for (let i = 3; i < row.length; i += 4) pixels += row[i] > 100 ? 1 : 0;
                return pixels;
            };
            return [length(305), length(20)];
        })()""")
        self.assertGreater(ink[1], 3 * max(ink[0], 1)) # noise falls below the threshold far more often

    def test_chosen_trace_has_marks_that_are_no_colour(self):
        self.open(self.recording)
        self.hold_at(1.25)
        self.traces(96, 8, 0.05)
        self.press("]")
        self.wait("orbeView.view().selected === 1 && orbeView.traces().first === 0", True) # it brings its lanes
        for keys, chosen in [("]", 2), ("]]", 4), ("[", 3)]:
            self.press(keys)
            # The time is the same, the labels are not.
            self.wait("orbeView.traces().written", [f"► {lane}" if lane == chosen else str(lane) for lane in range(8)])
            widths = self.run_script("orbeView.traces().widths")
            self.assertEqual([lane for lane, width in enumerate(widths) if width > 2 * min(widths)], [chosen])
        self.enter("first", 40)
        self.wait("orbeView.traces().written", [str(lane) for lane in range(40, 48)])
        self.assertEqual(set(self.run_script("orbeView.traces().widths")), {1})
        # Where not every lane has a label, the chosen one has.
        self.enter("count", 96)
        self.wait("orbeView.traces().lanes.length", 96)
        self.press("]" * 38)
        self.wait("orbeView.view().selected", 41)
        self.wait("orbeView.traces().written.includes('► 41')", True)
        labels = [int(text.removeprefix("► ")) for text in self.run_script("orbeView.traces().written")]
        self.assertGreater(min(after - before for before, after in zip(labels, labels[1:])), 1)
        self.press("d")
        self.wait("orbeView.traces().written.includes('TTL 1')", True)
        self.assertFalse(any("►" in text for text in self.run_script("orbeView.traces().written")))

    def test_map_of_a_probe_of_any_width_lies_beside_its_bars(self):
        folder = self.export("wide", "--seconds", "0.1")
        path = os.path.join(folder, "orbe_recording.json")
        with open(path, encoding="utf8") as file:
            description = json.load(file)
        description["probes"][1]["part_number"] = "NP1015" # its columns are 103 µm apart, the others' 48 µm at most
        with open(path, "w", encoding="utf8") as file:
            json.dump(description, file)
        os.symlink(self.recording, os.path.join(folder, "wide.bin"))
        self.open(os.path.join(folder, "wide.bin"))
        for port, across in [(1, [11, 27, 43, 59]), (3, [11, 114])]:
            self.press(str(port))
            self.wait(f"orbeView.channels()?.port === {port}")
            electrodes, places, width = self.run_script(f"""[
                orbeView.introduction().probes.find((probe) => probe.port === {port}).channels.map((channel) => channel[0]),
                Array.from({{ length: 384 }}, (_, channel) => orbeView.channelPlace(channel).x),
                document.getElementById('map').clientWidth]""")
            self.assertEqual(sorted(set(electrodes)), across)
            field = width * 0.09
            by_electrode = dict(zip(electrodes, places))
            for electrode, place in zip(electrodes, places):
                part = (electrode - across[0]) / (across[-1] - across[0])
                left, right = by_electrode[across[0]], by_electrode[across[-1]]
                self.assertAlmostEqual(place, left + part * (right - left), 3)
                self.assertGreater(place - field / 2, 2)
                self.assertLess(place + field / 2, width * 0.54 - 8) # where the line to the chosen channel's bar begins

    def test_logarithmic_axes_have_marks_wherever_they_begin(self):
        self.open(self.recording)
        marks = self.run_module("""const { decades } = await import("./look.js");
            return [[0.0009884418585531687, 0.0031], [14.6, 120], [7, 7], [0, 5], [1, Infinity], [null, null]].map(
                ([low, high]) => decades(low, high));""")
        self.assertEqual(marks, [[0.001, 0.002, 0.003], [20, 30, 40, 50, 60, 70, 80, 90, 100], [7], [], [], []])
        # And every height of a spectrum can be drawn.
        drawn = self.run_module("""const { Spectrum } = await import("./spectrum.js");
            const place = document.createElement("div");
            place.style.cssText = "width: 400px; height: 200px";
            document.body.append(place);
            const spectrum = new Spectrum(place, document.createElement("p"));
            let seed = 1;
            const random = () => (seed = seed * 16807 % 2147483647) / 2147483647;
            for (let round = 0; round < 200; ++round) {
                const low = 10 ** (random() * 8 - 4), high = low * (1 + 10 ** (random() * 6 - 3));
                const head = { port: 1, stream: "ap", channel: 0, step: 14.6 };
                spectrum.show(head, { columns: 4, values: [0, low, high, low] });
                await new Promise((drawn) => setTimeout(drawn));
            }
            spectrum.show({ port: 1, stream: "ap", channel: 0, step: 14.6 }, { columns: 0, values: [] });
            await new Promise((drawn) => setTimeout(drawn));
            return spectrum.plotted().frequencies.length;""")
        self.assertEqual(drawn, 0)

    def test_table_of_health_shows_sums_of_more_than_its_lines(self):
        self.open(self.recording)
        got = self.run_module("""const { Health } = await import("./health.js");
            const place = document.createElement("div"), table = document.createElement("table");
            document.body.append(place);
            const health = new Health(place, table, document.createElement("select"));
            const none = [null, null, null, null, null, null, null];
            health.show([119.5, 120].map((seconds) => ({
                seconds, streams: [[30000, 0, 0, 0, 0, 0.02, 1], none, none, none, [29000, 1, null, null, 0, 0, null]],
            })), [[0, 12, 3, 1024], [null, null, null, null], [null, null, null, null], [null, null, null, null], [2, null, null, 0]]);
            const cells = (row) => Array.from(table.rows[row].cells, (cell) =>
                (cell.classList.contains("bad") ? "! " : "") + cell.textContent);
            const rates = health.plot.data;
            health.select.value = "5";
            health.select.dispatchEvent(new Event("change"));
            return [cells(1), cells(2), cells(5), rates, health.plot.data];""")
        self.assertEqual(got[4], [[119.5, 120], [2, 2], [None] * 2, [None] * 2, [None] * 2, [0, 0]]) # per cent
        self.assertEqual(got[0], ["Port 1", "30,000", "0", "! 12", "! 3", "! 1,024", "2 %", "locked"])
        self.assertEqual(got[1], ["Port 2", "–", "–", "–", "–", "–", "–", "–"])
        self.assertEqual(got[2], ["ADC", "29,000", "! 2", "–", "–", "0", "0 %", "–"])
        self.assertEqual(got[3], [[119.5, 120], [30000, 30000], [None] * 2, [None] * 2, [None] * 2, [29000, 29000]])

    def test_damage_is_marked_where_it_lies(self):
        self.open(self.recording)
        self.hold_at(2.15)
        self.wait("orbeView.damage().length", 2)
        lost, tags = self.run_script("orbeView.damage()")
        self.assertAlmostEqual(lost[0] * 2.2, 0.8, delta=0.05)
        self.assertEqual(lost[1:], [1, 1, 0, 0, 0])
        self.assertAlmostEqual(tags[0] * 2.2, 1.6, delta=0.05)
        self.assertEqual(tags[1:], [0, 0, 3, 0, 0])
        text = self.driver.find_element(By.ID, "damage").text
        self.assertEqual(text, "2.200 s: ▲ row counter 1, ◆ frame counter 1, ✕ wrong tags 3")
        self.wait("orbeView.health().lines.length > 0 && orbeView.health().lines.at(-1).seconds > 2", True)
        sums, quantities = self.run_script("[orbeView.health().sums, orbeView.health().quantities]")
        port1 = dict(zip(quantities, sums[0]))
        port3 = dict(zip(quantities, sums[2]))
        self.assertEqual((port1["Row gaps"], port1["Frame gaps"], port1["Wrong tags"]), (1, 1, 3))
        self.assertEqual((port3["Row gaps"], port3["Frame gaps"], port3["Wrong tags"], port3["Lost"]), (0, 0, 0, 0))
        self.assertAlmostEqual(port3["Rate /s"], 30000, delta=100)
        self.assertTrue(0 < port1["Lost"] <= 240) # no more than 4 ms for each of the two
        # Who comes there once more does not count it twice.
        self.hold_at(0.3)
        self.wait("orbeView.health().lines.length", 0)
        self.hold_at(2.15)
        self.wait("orbeView.health().lines.length > 0 && orbeView.health().lines.at(-1).seconds > 2", True)
        self.assertEqual(self.run_script("orbeView.health().sums"), sums)
        # In the traces it is left out and hatched.
        self.enter("second", 0.9)
        self.wait("Math.abs(orbeView.status().position - 0.9) < 1e-4", True)
        shown = self.traces(96, 8, 0.2)
        columns = [i for i, count in enumerate(shown["lost"]) if count > 0]
        self.assertGreater(len(columns), 0)
        self.assertAlmostEqual(shown["times"][2 * columns[0]], 0.8, delta=0.005)
        empty = [i for i in columns if shown["lost"][i] == round(shown["step"] * 30000)]
        for column in empty:
            self.assertEqual({lane[2 * column] for lane in shown["lanes"]}, {None})
        pixel = self.run_script(f"""(() => {{
            const plot = document.querySelector('#traces canvas'), over = document.querySelector('#traces .u-over');
            const ratio = plot.width / plot.clientWidth, shown = orbeView.traces();
            const part = (shown.times[{2 * columns[0]}] + shown.step / 2 - shown.times[0])
                / (shown.times.at(-1) - shown.times[0]);
            const x = (over.offsetLeft + part * over.clientWidth) * ratio;
            return Array.from(plot.getContext('2d').getImageData(x, (over.offsetTop + 3) * ratio, 1, 1).data);
        }})()""")
        self.assertGreater(pixel[0], pixel[1] + 20, pixel) # red, for those who see it

    def test_port_that_is_dead(self):
        folder = os.path.join(self.folder.name, "dead")
        both = os.path.join(self.folder.name, "both.bin")
        one = os.path.join(self.folder.name, "one.bin")
        make_recording(RECORDING, both, "--seconds", "0.6", "--ports", "1,2")
        make_recording(RECORDING, one, "--seconds", "1.2", "--ports", "1")
        subprocess.run([RECORD, folder, "--simulation", both, "--format", "raw", "--seconds", "0.2"], check=True,
                       capture_output=True, timeout=PATIENCE)
        os.replace(one, os.path.join(folder, "raw_data.bin"))
        self.open(folder)
        self.wait("orbeView.health().lines.length > 0")
        self.press("2")
        self.wait("document.getElementById('channel').textContent", "Port 2: no data")
        self.assertEqual(self.run_script("orbeView.traces().lanes.flat().filter((value) => value !== null).length"), 0)
        row = "document.getElementById('states').rows[2].innerText.split(/\\s+/).slice(0, 3).join(' ')"
        self.wait(row, "Port 2 0")
        # Not as it should be, unlike that of ports where no probe is.
        self.assertEqual(self.run_script("""[1, 2, 3, 4].map(
            (row) => document.getElementById('states').rows[row].cells[1].classList.contains('bad'))"""),
                         [False, True, False, False])
        self.press("1")
        self.wait("orbeView.channels() && orbeView.channels().port === 1 && orbeView.channels().rms[5] > 0")

    def test_recording_that_is_being_made(self):
        folder = os.path.join(self.folder.name, "growing")
        source = os.path.join(self.folder.name, "source.bin")
        make_recording(RECORDING, source, "--seconds", "12", "--ports", "1", "--signal", "ramp")
        recorder = subprocess.Popen([RECORD, folder, "--simulation", source, "--format", "raw"],
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        try:
            file = os.path.join(folder, "raw_data.bin")
            wait_until(lambda: os.path.exists(os.path.join(folder, "orbe_recording.json")) and os.path.exists(file)
                       and os.path.getsize(file) > 1 << 22)
            self.open(folder)
            length = self.wait("orbeView.status().length > 0.2 && orbeView.status().length")
            self.wait(f"orbeView.status().position > {length} + 0.3", True) # it goes on by itself
            self.assertIn("raw_data.bin (growing)",
                          self.driver.find_element(By.ID, "source").text)
            self.wait("orbeView.status().length > 3.2", True)
            recorder.send_signal(signal.SIGINT)
            output, errors = recorder.communicate(timeout=PATIENCE)
            self.assertEqual(recorder.returncode, 0, errors)
            self.assertIn("probe 1: ", output)
            self.assertIn(", 0 samples lost", output)
            # And what is shown is what was recorded.
            self.hold_at(3.0)
            shown = self.traces(200, 2, 0.01)
            for place in range(2, 598, 2):
                sample = round(shown["times"][place] * 30000)
                ramps = [round(lane[place] / AP_UV) - ramp(200 + i, sample) for i, lane in enumerate(shown["lanes"])]
                offset = ramps[0] % 1024 if place == 2 else offset
                self.assertEqual([value % 1024 for value in ramps], [offset, offset])
        finally:
            recorder.kill()
            recorder.communicate()

    def export(self, name, *arguments):
        folder = os.path.join(self.folder.name, name)
        subprocess.run([RECORDING, "export", self.recording, folder, *arguments], check=True, capture_output=True,
                       timeout=PATIENCE)
        return folder

    def expect_gap_in_traces(self, gap, first=0):
        """What is lost is left out and hatched, and the samples beside it are there."""
        lost = range(gap[0], gap[0] + gap[1])
        self.hold_at((gap[0] + 150) / 30000)
        shown = self.traces(200, 4, 0.01)
        places = [round(time * 30000) for time in shown["times"][::2]]
        self.assertEqual([place for place, count in zip(places, shown["lost"]) if count], list(lost))
        for lane, values in enumerate(shown["lanes"]):
            for place, value in zip(places, values[::2]):
                if place in lost:
                    self.assertIsNone(value)
                else:
                    self.assertAlmostEqual(value / AP_UV, ramp(200 + lane, first + place), 1)

    def expect_gaps_on_bar_and_in_health(self, gaps, length):
        """Each marked where it lies; of port 1, at the end of what is known."""
        # A gap that reaches from one place of the bar into the next has a mark in both.
        self.wait("orbeView.damage().reduce((sum, mark) => sum + mark[5], 0)", sum(count for _, count in gaps))
        marks = self.run_script("orbeView.damage()")
        self.assertTrue(all(mark[1:5] == [0, 0, 0, 0] for mark in marks), marks)
        for sample, count in gaps:
            near = [mark[5] for mark in marks if -0.002 <= mark[0] - sample / 30000 / length
                    <= count / 30000 / length + 0.002]
            self.assertEqual(sum(near), count, marks)
        self.assertEqual(self.driver.find_element(By.ID, "damage").text,
                         f"{length:.3f} s: ■ lost samples {sum(count for _, count in gaps)}")
        self.hold_at(length - 0.02)
        self.wait(f"orbeView.health().lines.length > 0 && orbeView.health().lines.at(-1).seconds > {length} - 0.6", True)
        # All at once: the next picture may be of another place.
        health = self.run_script("orbeView.health()")
        lines = health["lines"]
        first = lines[0]["seconds"] - 0.5
        port1 = dict(zip(health["quantities"], health["sums"][0]))
        self.assertEqual(port1["Lost"], sum(count for sample, count in gaps
                                            if first <= sample / 30000 < lines[-1]["seconds"]))
        self.assertGreater(port1["Rate /s"], 29900)
        for name in ("Row gaps", "Frame gaps", "Wrong tags", "Queue", "Link"):
            self.assertIsNone(port1[name], name)
        row = "document.getElementById('states').rows[1].innerText.split(/\\s+/).slice(3, 6).join(' ')"
        self.assertEqual(self.run_script(row), "– – –")

    def test_folder_in_the_format_of_spikeglx(self):
        folder = self.export("monday", "--ap-gain", "1000", "--lfp-gain", "125")
        gaps = gaps_of(folder, "imec0.ap")
        self.assertEqual([sample for sample, _ in gaps], [24000, 48000]) # 0.8 s and 1.6 s
        self.open(folder + "/")
        self.assertIn("monday (", self.driver.find_element(By.ID, "source").text)
        self.hold_at(1.25)
        for first, count, signal in [(100, 1, tone), (200, 16, ramp)]:
            shown = self.traces(first, count, 0.01)
            self.assertAlmostEqual(shown["step"], 1 / 30000, 9)
            for lane, values in enumerate(shown["lanes"]):
                for place in range(0, 600, 2):
                    sample = round(shown["times"][place] * 30000)
                    self.assertLessEqual(abs(values[place] / (AP_UV / 2) - signal(first + lane, sample)),
                                         1.01 if signal is tone else 0.01, (first + lane, sample))
        self.press("l")
        shown = self.traces(200, 4, 0.05)
        for lane, values in enumerate(shown["lanes"]):
            for place in range(2, len(values) - 2, 2):
                sample = round(shown["times"][place] * 2500)
                self.assertAlmostEqual(values[place] / (2 * LFP_UV), ramp(200 + lane, sample), 2)
        self.press("a")
        self.expect_gaps_on_bar_and_in_health(gaps, 2.2)

    def test_folder_in_the_format_of_open_ephys(self):
        folder = self.export("tuesday", "--format", "open-ephys", "--channels", "96-320")
        gaps = gaps_of(folder, "ORBE-100.ProbeA-AP")
        self.open(folder)
        self.expect_gap_in_traces(gaps[0])
        # The same inputs as of the raw recording, volt by volt.
        self.hold_at(1.0)
        self.press("d")
        shown = self.traces(0, 12, 0.01)
        data = os.path.join(folder, "Record Node 101/experiment1/recording1/continuous/ORBE-100.ADC/continuous.dat")
        with open(data, "rb") as file:
            for place, time_shown in enumerate(shown["times"][:-2:2]):
                file.seek(round(time_shown * 30000) * 24)
                for lane, count in enumerate(struct.unpack("<8h", file.read(16))):
                    self.assertAlmostEqual(shown["lanes"][lane][2 * place] * 32768 / 5, count, 1)
        self.assertEqual({value for lane in shown["lanes"][8:] for value in lane} - {0, 1, None}, set())
        self.press("a")
        self.expect_gaps_on_bar_and_in_health(gaps, 2.2)
        # What was not saved is not there.
        self.traces(96, 1, 0.01)
        self.enter("first", 92)
        self.enter("count", 8)
        self.wait("orbeView.traces().first === 92 && orbeView.traces().lanes.length === 8", True)
        self.assertEqual(self.run_script("orbeView.traces().lanes.map((lane) => lane.some((value) => value !== null))"),
                         [False] * 4 + [True] * 4)
        for selected, steps in [(0, 95), (95, 1)]:
            self.wait("document.getElementById('channel').textContent", f"Channel {selected} is not in the recording")
            self.press("]" * steps)
        self.wait("document.getElementById('channel').textContent.startsWith('Channel 96, electrode 96: ')", True)

    def test_notice_of_a_problem_goes_with_it_or_is_put_away(self):
        folder = self.export("thursday")
        table, aside = (os.path.join(folder, name) for name in ("gaps.csv", "aside.csv"))
        self.open(folder, complaint="(orbe-view: cannot read '.*gaps.csv': lost samples look like zeros\n){1,3}")
        text = "document.getElementById('notice').textContent"
        button = self.driver.find_element(By.ID, "put-away")

        def expect_notice(isThere):
            begin = f"cannot read '{table}': lost samples look like zeros" if isThere else ""
            self.wait(text, begin)
            self.assertEqual(button.is_displayed(), isThere)
            # And so it stays, though every picture tells of it or does not.
            pictures = self.run_script("orbeView.pictures()")
            self.wait(f"orbeView.pictures() > {pictures} + 3", True)
            self.assertEqual(self.run_script(text), begin)

        expect_notice(False)
        os.rename(table, aside)
        expect_notice(True)
        os.rename(aside, table) # mended
        expect_notice(False)
        for put_away in (lambda: self.press("x"), button.click):
            os.rename(table, aside)
            expect_notice(True)
            put_away()
            expect_notice(False)
            os.rename(aside, table)
            self.wait("orbeView.status().problem", "")

    def test_folder_that_is_being_written(self):
        folder = os.path.join(self.folder.name, "wednesday")
        source = os.path.join(self.folder.name, "lossy.bin")
        # Far longer than is recorded, unless the machine is very busy.
        make_recording(RECORDING, source, "--seconds", "10", "--ports", "1", "--signal", "ramp",
                       "--fault", "lost-row:1@1950000", "--fault", "lost-row:1@3315000")
        recorder = subprocess.Popen([RECORD, folder, "--simulation", source],
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        try:
            wait_until(lambda: os.path.exists(os.path.join(folder, "gaps.csv")))
            self.open(folder)
            self.assertIn("wednesday (growing)", self.driver.find_element(By.ID, "source").text)
            length = self.wait("orbeView.status().length > 0.2 && orbeView.status().length")
            self.wait(f"orbeView.status().position > {length} + 0.3", True) # it goes on by itself
            # And tells at once of what is lost. One gap may have marks in several places of the bar.
            wait_until(lambda: len(gaps_of(folder, "imec0.ap")) >= 2)
            first_two = sum(count for _, count in gaps_of(folder, "imec0.ap")[:2])
            self.wait(f"orbeView.damage().reduce((sum, mark) => sum + mark[5], 0) >= {first_two}", True)
            recorder.send_signal(signal.SIGINT)
            output, errors = recorder.communicate(timeout=PATIENCE)
            self.assertEqual(recorder.returncode, 3, errors) # something was lost: what the recording lacks
            gaps = gaps_of(folder, "imec0.ap")
            self.assertGreaterEqual(len(gaps), 2, output)
            self.assertIn(f" {sum(count for _, count in gaps)} samples lost", output)
            run = os.path.join(folder, "wednesday_g0")
            length = max(os.path.getsize(os.path.join(run, "wednesday_g0_imec0/wednesday_g0_t0.imec0.ap.bin")) // 770,
                         os.path.getsize(os.path.join(run, "wednesday_g0_t0.obx0.obx.bin")) // 28) / 30000
            self.wait(f"Math.abs(orbeView.status().length - {length}) < 1e-6", True)
            with open(os.path.join(folder, "orbe_recording.json"), encoding="utf8") as file:
                first = json.load(file)["first_sample"] # the files begin later on a busy machine
            for gap in gaps:
                self.expect_gap_in_traces(gap, first)
            self.expect_gaps_on_bar_and_in_health(gaps, length)
        finally:
            recorder.kill()
            recorder.communicate()

    def test_keys(self):
        self.open("--simulation", self.recording)
        self.wait("orbeView.status().position > 1.6", True)
        self.press(" ")
        self.wait("orbeView.view().paused", True)
        held = self.run_script("orbeView.view().end")
        self.wait(f"Math.abs(orbeView.traces().times.at(-1) - {held}) < 0.01", True)
        self.press(Keys.ARROW_LEFT)
        self.wait("orbeView.view().end", held - 0.5)
        self.wait(f"Math.abs(orbeView.traces().times.at(-1) - {held - 0.5}) < 0.01", True)
        self.press(Keys.END)
        self.wait("orbeView.view().paused", False)
        self.press("]]][")
        self.wait("orbeView.view().selected", 2)
        self.press(Keys.ARROW_UP + Keys.PAGE_UP + Keys.ARROW_DOWN)
        self.wait("orbeView.view().first", 16)
        self.press("n")
        self.wait("orbeView.view().count", 32)
        self.press("m-")
        self.wait("[orbeView.view().count, orbeView.view().scale].join()", "16,1000")
        self.press("+.")
        self.wait("[orbeView.view().scale, orbeView.view().seconds].join()", "500,2")
        self.press("3")
        self.wait("orbeView.traces().port", 3)
        self.press("l")
        self.wait("orbeView.traces().stream", "lfp")
        self.press("d")
        self.wait("orbeView.traces().stream", "adc")
        before = self.run_script("document.documentElement.dataset.theme")
        colour = "getComputedStyle(document.body).backgroundColor"
        ground = self.run_script(colour)
        self.press("t")
        self.wait("document.documentElement.dataset.theme !== '%s'" % before, True)
        self.assertNotEqual(self.run_script(colour), ground)
        self.press("?")
        self.wait("document.getElementById('keys').open", True)
        self.press(Keys.ESCAPE)
        self.wait("document.getElementById('keys').open", False)
        self.press("s")
        saved = wait_until(lambda: [name for name in os.listdir(self.folder.name) if name.endswith(".png")])
        with open(os.path.join(self.folder.name, saved[0]), "rb") as file:
            self.assertEqual(file.read(8), b"\x89PNG\r\n\x1a\n")

    def test_picture_stays_as_long_as_it_is_held(self):
        recording = os.path.join(self.folder.name, "longer.bin")
        make_recording(RECORDING, recording, "--seconds", "9", "--ports", "1", "--no-rhd", "--signal", "ramp")
        self.open("--simulation", recording)
        self.choose("window", 0.01)
        self.wait("orbeView.traces()?.seconds === 0.01 && orbeView.status().position > 0.7 && orbeView.spectrum().peak > 0", True)
        self.press(" ")
        self.wait("orbeView.view().paused", True)
        held = self.run_script("orbeView.view().end")
        shown = self.run_script("orbeView.traces()")
        # At once, and what is shown already.
        self.assertLess(abs(shown["times"][0] + 0.01 - held), 1 / 30000)
        self.wait(f"orbeView.spectrum().of.end === {held}", True)
        spectrum = self.run_script("orbeView.spectrum()")
        self.assertGreater(len(spectrum["values"]), 100)

        # Until the program has no sample of it any more.
        self.wait(f"orbeView.status().position > {held} + 2.2", True)
        self.assertEqual(self.run_script("orbeView.traces()"), shown)
        self.assertEqual(self.run_script("orbeView.spectrum()"), spectrum)
        lanes = shown["lanes"]
        for place in range(0, 600, 2): # sample by sample
            self.assertEqual(lanes[3][place], lanes[3][place + 1])
            self.assertAlmostEqual((lanes[3][place] - lanes[0][place]) / AP_UV % 1024, 3, 2)
        # Another width of the page, or another channel of it, changes nothing.
        self.press("]]")
        self.driver.set_window_size(1000, 800)
        self.addCleanup(self.driver.set_window_size, 1200, 800)
        pictures = self.run_script("orbeView.pictures()")
        self.wait(f"orbeView.pictures() > {pictures} + 10", True)
        self.assertEqual(self.run_script("[orbeView.view().selected, orbeView.traces().lanes]"), [2, lanes])

        # What is asked for besides is shown as it is remembered, and stays as well.
        self.choose("window", 0.5)
        self.wait("orbeView.traces().seconds", 0.5)
        wide = self.run_script("orbeView.traces()")
        self.assertAlmostEqual(wide["times"][-1], held, delta=0.01)
        self.press("l")
        self.wait("orbeView.traces().stream", "lfp")
        self.assertEqual(self.run_script("orbeView.traces().lanes.flat().filter((value) => value === null).length"), 0)
        # Back as far as there is anything, in whole windows, and no further.
        self.press(Keys.HOME)
        self.wait("orbeView.view().end", 0.5)
        self.wait("orbeView.traces().end", 0.5)
        first = self.run_script("orbeView.traces()")
        self.assertAlmostEqual(first["times"][0], 0, delta=2 * first["step"])
        self.assertEqual([value for lane in first["lanes"] for value in lane[2:] if value is None], [])
        text = "document.getElementById('notice').textContent"
        self.assertEqual(self.run_script(text), "")
        self.press(Keys.ARROW_LEFT)
        self.wait(text, "Nothing is remembered of the time before 0.000 s")
        self.assertEqual(self.run_script("orbeView.view().end"), 0.5)
        self.press(Keys.ARROW_RIGHT)
        self.wait("orbeView.traces().end", 0.75)
        self.assertEqual(self.run_script(text), "")
        self.press(Keys.END)
        self.wait("orbeView.view().paused", False)
        self.wait("orbeView.traces().end === null && orbeView.traces().times[0] > 2", True)

    def test_steps_lead_to_what_is_remembered(self):
        self.open(self.recording)
        steps = [ # end, by, window, now, remembered from; where that leads
            (100, -0.5, 1, 100, 68, 99.5), # as told
            (100, -30, 1, 100, 68, 71), # a whole window, and nothing that is forgotten before it comes
            (100, -30, 20, 100, 68, 90), # however long it is
            (100, -30, 30, 100, 68, 100), # it shows all there is
            (5, -30, 1, 5, 0, 1), # there is no more
            (0.4, -0.5, 1, 0.4, 0, 0.4),
            (100, -30, 1, 100, 97, 98), # it begins there
            (96, -0.5, 1, 140, 108, 96), # held, and all before it is forgotten: stays
            (96, 0.5, 1, 140, 108, 111), # the first that is still there
            (120, 0.5, 1, 140, 108, 120.5),
            (139.8, 0.5, 1, 140, 108, 140), # now
        ]
        got = self.run_module(f"""const {{ stepped }} = await import("./holding.js");
            return {json.dumps(steps)}.map(([end, by, seconds, position, remembered]) =>
                stepped({{ end, by, seconds, position, remembered, longest: 30 }}));""")
        self.assertEqual(got, [step[-1] for step in steps])

    def test_mouse_on_the_traces(self):
        self.open(self.recording)
        self.hold_at(1.25)
        self.traces(100, 16, 0.05)
        traces = self.driver.find_element(By.ID, "traces")

        def turn(by, key=None):
            wheel = ActionChains(self.driver)
            if key:
                wheel.key_down(key)
            wheel.scroll_from_origin(ScrollOrigin.from_element(traces), 0, by)
            if key:
                wheel.key_up(key)
            wheel.perform()

        ratio = "devicePixelRatio"
        before = self.run_script(ratio)
        # Up is away from the tip, by a quarter of what is shown.
        turn(-120)
        self.wait("orbeView.traces().first", 104)
        turn(120)
        turn(120)
        self.wait("orbeView.traces().first", 96)
        for key, what, values in [(Keys.SHIFT, "scale", (200, 500)), (Keys.CONTROL, "seconds", (0.02, 0.05))]:
            turn(-120, key)
            self.wait(f"orbeView.view().{what}", values[0])
            turn(120, key)
            self.wait(f"orbeView.view().{what}", values[1])
            self.assertEqual(self.run_script("orbeView.view().first"), 96)
        # Where Shift turns the wheel sideways, as in browsers with a window.
        self.run_script("""document.getElementById('traces').dispatchEvent(
            new WheelEvent('wheel', { deltaX: 120, deltaY: 0, shiftKey: true }))""")
        self.wait("orbeView.view().scale", 1000)
        self.assertEqual(self.run_script(ratio), before) # the browser's own use of Ctrl and the wheel
        # A click on a lane chooses its channel.
        for lane in (3, 11):
            x, y = self.run_script(f"""(() => {{
                const over = document.querySelector('#traces .u-over').getBoundingClientRect();
                // The lowest lane is in the middle of 0.7 lanes from below, 16.4 lanes are as high as the plot.
                return [over.left + over.width / 2, over.bottom - (0.7 + {lane}) / 16.4 * over.height];
            }})()""")
            mouse = ActionChains(self.driver)
            mouse.w3c_actions.pointer_action.move_to_location(round(x), round(y))
            mouse.w3c_actions.pointer_action.click()
            mouse.perform()
            self.wait("orbeView.view().selected", 96 + lane)
            self.wait(f"orbeView.traces().written.includes('► {96 + lane}')", True)
            self.wait("orbeView.spectrum().of.channel", 96 + lane)
        self.assertEqual(self.run_script("orbeView.view().first"), 96)

    def test_click_on_the_time_bar_and_home(self):
        self.open(self.recording)
        self.hold_at(2.0)
        bar = self.driver.find_element(By.ID, "timebar")
        size = bar.size
        for part in (0.25, 0.75):
            ActionChains(self.driver).move_to_element_with_offset(bar, round((part - 0.5) * size["width"]), 0).click().perform()
            self.wait(f"Math.abs(orbeView.status().position - {part * 2.2}) <= 2.2 * 2 / {size['width']}", True)
            self.wait("Math.abs(orbeView.traces().times.at(-1) - orbeView.status().position) < 0.01", True)
            self.assertTrue(self.run_script("orbeView.view().paused")) # it stays there
        # By 30 s, or to the beginning.
        self.press(Keys.HOME)
        self.wait("orbeView.status().position", 0)
        self.press(" ")
        self.wait("!orbeView.view().paused && orbeView.status().position > 0.1", True)
        ActionChains(self.driver).move_to_element_with_offset(bar, round(0.25 * size["width"]), 0).click().perform()
        self.wait("orbeView.status().position > 1.7", True) # and goes on from there
        self.assertFalse(self.run_script("orbeView.view().paused"))

    def test_history_of_the_queues(self):
        self.open("--simulation", self.recording)
        self.press("qqqqq")
        self.wait("document.getElementById('quantity').selectedOptions[0].text", "Queue, per cent full")
        self.wait("orbeView.health().lines.length > 2", True)
        lines, plotted = self.run_script("[orbeView.health().lines, orbeView.health().plotted]")
        for stream in (0, 2, 4): # those that there are
            self.assertEqual(plotted[stream], [line["streams"][stream][5] * 100 for line in lines])
        for stream in (1, 3):
            self.assertEqual(set(plotted[stream]), {None})

    def test_streams_are_stopped_and_started_where_that_is_allowed(self):
        self.open("--simulation", self.recording, "--control")
        self.wait("orbeView.status().streams && orbeView.status().position > 0.2", True)
        self.press("c")
        self.wait("orbeView.status().streams", False)
        self.wait("document.getElementById('time').textContent.startsWith('streams stopped')", True)
        self.driver.find_element(By.ID, "control").click()
        self.wait("orbeView.status().streams", True)

    def test_nothing_comes_from_elsewhere(self):
        view = self.open(self.recording)
        self.wait("orbeView.traces()")
        names = self.run_script("performance.getEntriesByType('resource').map((entry) => entry.name)")
        self.assertGreater(len(names), 8)
        self.assertEqual([name for name in names if not name.startswith(view.address)], [])
        # With every control having a name.
        unnamed = self.run_script("""[...document.querySelectorAll('button, input, select, canvas[tabindex]')].filter(
            (each) => !(each.textContent.trim() || each.labels?.length || each.getAttribute('aria-label'))).length""")
        self.assertEqual(unnamed, 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[6:], verbosity=2)
