"""The box as Python sees it, played from a recording: settings, opening and closing, and what they do to the
process."""

import os
import subprocess
import sys

import numpy as np
import orbe
import pytest

# Two ports for 0.3 s.
SMALL = ("--seconds", "0.3", "--ports", "1,2")


def test_settings_decide_on_scales_and_reach_the_probe(recordings):
    with orbe.open(simulation=recordings.make(*SMALL)) as box:
        probe = box.probes[0]
        gains = np.where(np.arange(384) % 2 == 0, 1000, 250)
        probe.configure(ap_gain=gains, lfp_gain=125, banks=1, reference="tip", ap_filter=False)
        box.start()
        block = probe.read(0.02)
        assert np.allclose(block.ap_scale, 1.2e6 / 1024 / gains)
        assert np.allclose(block.lfp_uv, block.lfp * (1.2e6 / 1024 / 125))
        assert block.ap_uv.dtype == np.float32 and block.ap_uv[5, 3] == pytest.approx(block.ap[5, 3] * 4.6875)
        assert probe.electrodes[:2].tolist() == [384, 385] and probe.electrodes[191] == -1
        assert probe.positions[0].tolist() == [27.0, 3840.0]
        probe.configure(banks=2)
        assert probe.electrodes[191:].tolist() == [-1] * 193 and probe.electrodes[190] == 958


def test_settings_that_a_probe_does_not_have_are_refused(recordings):
    refused = [
        ({"ap_gain": 501}, "there is no gain of 501; there are 50, 125, 250, 500, 1000, 1500, 2000, 3000"),
        ({"lfp_gain": [250, 250]}, "give a number, or 384 of them"),
        ({"banks": 3}, "there are the banks 0, 1 and 2"),
        ({"reference": "ground"}, "there is no reference 'ground'; there are external, tip, internal"),
    ]
    with orbe.open(simulation=recordings.make(*SMALL)) as box:
        for settings, message in refused:
            with pytest.raises(ValueError, match=message):
                box.probes[0].configure(**settings)
        assert box.probes[0].ap_gains[0] == 500 and box.probes[0].electrodes[0] == 0


def test_a_calibration_is_found_by_the_serial_number_and_applied(recordings, tmp_path):
    path = recordings.make(*SMALL)
    recordings.calibration(tmp_path, 900000001)
    raw = orbe.RawFile(path)["probe1.ap"]
    factors = gain_factors(tmp_path / "900000001_gainCalValues.csv", gain_code=3)
    with orbe.open(simulation=path) as box:
        probe = box.probe(1)
        assert probe.serial_number == 900000001
        probe.configure(calibration=tmp_path)
        box.start()
        block = probe.read(0.05)
        expected = np.trunc(np.clip(raw.counts(0, len(block)) * factors, -512, 511)).astype(np.int16)
        assert np.array_equal(block.ap, expected) and not np.array_equal(block.ap, raw.counts(0, len(block)))
        with pytest.raises(orbe.OrbeError, match="the calibration of the probe of port 2 is not there: '.*900000002"):
            box.probe(2).configure(calibration=tmp_path)


def gain_factors(path, gain_code):
    lines = path.read_text().splitlines()[1:385]
    return np.array([float(line.split(",")[1 + gain_code]) for line in lines], dtype=np.float32)


def test_the_range_of_the_adc_inputs_is_their_scale(recordings):
    with orbe.open(simulation=recordings.make(*SMALL)) as box:
        box.adc.configure(range_volts=10, low_volts=1.0, high_volts=1.5)
        box.start()
        block = box.adc.read(0.1)
        assert np.allclose(block.volts, block.counts * (10 / 32768))
        above, below = block.volts > 1.5, block.volts < 1.0
        assert block.comparators[above].all() and not block.comparators[below].any() and above.any()
        with pytest.raises(ValueError, match="no range of 3 V; there are 2.5, 5 and 10"):
            box.adc.configure(range_volts=3)
        with pytest.raises(ValueError, match="give both"):
            box.adc.configure(low_volts=1.0)


def test_a_process_has_one_box_and_its_own_working_directory_back(recordings, tmp_path):
    path = recordings.make(*SMALL)
    with orbe.open(simulation=path) as box:
        assert os.getcwd() == str(tmp_path) and os.listdir(tmp_path) == []
        assert "openBS" in box.log.read_text(errors="replace")
        with pytest.raises(orbe.OrbeError, match="has a box open already"):
            orbe.open(simulation=path)
    box.close()
    with pytest.raises(orbe.OrbeError, match="has been closed"):
        box.start()
    orbe.open(simulation=path).close()


def test_recordings_are_named_from_where_the_caller_is(recordings, tmp_path):
    (tmp_path / "here ö.bin").symlink_to(recordings.make(*SMALL))
    with orbe.open(simulation="here ö.bin") as box:
        assert len(box.probes) == 2
    with pytest.raises(orbe.RecordingError, match="'.*nowhere.bin' cannot be read: No such file"):
        orbe.open(simulation="nowhere.bin")


def test_without_a_box_the_error_says_so():
    with pytest.raises(orbe.ApiError, match="openBS answers 5: .+") as caught:
        orbe.open()
    assert caught.value.function == "openBS" and caught.value.code == 5
    with pytest.raises(orbe.ApiError):
        orbe.open()  # and the failure leaves nothing open


def test_the_library_prints_nothing_on_the_terminal_unless_it_may(recordings):
    program = (
        "import sys, orbe\n"
        "with orbe.open(simulation=sys.argv[1], quiet=sys.argv[2] == 'quiet') as box:\n"
        "    box.start()\n"
        "    print('mine', len(box.probes[0].read(0.1)), flush=True)\n"
    )

    def run(quiet):
        arguments = [sys.executable, "-c", program, str(recordings.make(*SMALL)), quiet]
        return subprocess.run(arguments, check=True, capture_output=True, text=True)

    quiet = run("quiet")
    assert quiet.stdout == "mine 3000\n" and quiet.stderr == ""
    assert "ORBE_HOST_MODE file present" in run("loud").stdout


def test_a_program_that_ends_without_closing_leaves_nothing_behind(recordings, tmp_path):
    program = "import sys, orbe; box = orbe.open(simulation=sys.argv[1]); box.start(); print(box.log)"
    arguments = [sys.executable, "-c", program, str(recordings.make(*SMALL))]
    environment = {**os.environ, "TMPDIR": str(tmp_path)}
    ended = subprocess.run(arguments, check=True, capture_output=True, text=True, env=environment, timeout=60)
    assert ended.stdout.startswith(str(tmp_path)) and os.listdir(tmp_path) == []


def test_a_process_that_is_forked_off_takes_nothing_with_it(recordings):
    program = (
        "import os, sys, orbe\n"
        "box = orbe.open(simulation=sys.argv[1])\n"
        "child = os.fork()\n"
        "if child == 0: sys.exit(0)\n"
        "assert os.waitpid(child, 0)[1] == 0 and box.log.exists()\n"
        "box.start()\n"
        "print(len(box.probes[0].read(0.1)))\n"
    )
    arguments = [sys.executable, "-c", program, str(recordings.make(*SMALL))]
    ended = subprocess.run(arguments, check=True, capture_output=True, text=True, timeout=60)
    assert ended.stdout == "3000\n"
