"""The box as Python sees it, played from a recording; what comes is held against the raw file, which is decoded without
the library."""

import os
import subprocess
import sys
import time
from pathlib import Path

import numpy as np
import orbe
import pytest
from orbe.packets import ROWS

DAMAGE = (
    "--fault lost-row:1@5000+3 --fault lost-row:2@30000+700 --fault wrong-tag:1@90000 --fault missing-flag:3@700 "
    "--fault bad-marker:4@400000"
).split()


def play(path: Path, seconds: float = 0.1):
    """All blocks of all streams of a recording."""
    with orbe.open(simulation=path) as box:
        box.start()
        probes = {probe.port: [] for probe in box.probes}
        adc = []
        came = True
        while came:
            came = False
            for probe in box.probes:
                block = probe.read(seconds, timeout=0.4)
                if block is not None:
                    probes[probe.port].append(block)
                    came = True
            block = box.adc.read(seconds, timeout=0.1)
            if block is not None:
                adc.append(block)
                came = True
        assert all(probe.lost_samples == sum(b.lost for b in probes[probe.port]) for probe in box.probes)
        return probes, adc


def joined(blocks, name):
    return np.concatenate([getattr(block, name) for block in blocks])


def test_every_sample_is_that_of_the_raw_file(recordings):
    path = recordings.make("--seconds", "0.6")
    raw = orbe.RawFile(path)
    probes, adc = play(path)
    assert sorted(probes) == [1, 2, 3, 4]
    for port, blocks in probes.items():
        numbers = joined(blocks, "sample_numbers")
        assert len(numbers) >= 17_760 and np.array_equal(numbers, np.arange(len(numbers)))
        assert np.array_equal(joined(blocks, "ap"), raw[f"probe{port}.ap"].counts(0, len(numbers)))
        assert np.array_equal(joined(blocks, "lfp"), raw[f"probe{port}.lfp"].counts(0, len(numbers) // ROWS))
        assert [len(block) for block in blocks[:-1]] == [3000] * (len(blocks) - 1)
        assert sum(block.lost for block in blocks) == 0
        sync = raw[f"probe{port}.ap"].sync(0, len(numbers))
        assert np.array_equal(joined(blocks, "sync"), sync) and 0 < sync.sum() < len(sync)
    numbers = joined(adc, "sample_numbers")
    assert len(numbers) >= 17_000
    stop = int(numbers[-1]) + 1
    assert np.array_equal(joined(adc, "counts"), raw["adc"].counts(0, stop)[numbers])
    assert np.array_equal(joined(adc, "ttl"), raw.ttl(0, stop)[numbers, :4])
    assert np.array_equal(joined(adc, "sync"), raw["adc"].sync(0, stop)[numbers])


def test_what_is_left_of_a_damaged_recording_is_that_of_the_raw_file(recordings):
    path = recordings.make("--seconds", "0.6", *DAMAGE)
    raw = orbe.RawFile(path)
    assert raw.damage
    probes, adc = play(path)
    for port, blocks in probes.items():
        stream = raw[f"probe{port}.ap"]
        numbers = joined(blocks, "sample_numbers")
        stop = int(numbers[-1]) + 1
        lost = stop - len(numbers)
        assert lost > 0 and sum(block.lost for block in blocks) == lost
        assert np.array_equal(joined(blocks, "ap"), stream.counts(0, stop)[numbers])
        in_gaps = np.concatenate([np.arange(gap.sample, gap.sample + gap.length) for gap in stream.gaps])
        assert stream.gaps and not np.isin(numbers, in_gaps).any(), "the library has what the file has not"
        assert lost - stream.lost_samples < 400, "the library drops more, but not so much"
        compare_whole_lfp_samples(raw[f"probe{port}.lfp"], numbers, joined(blocks, "lfp"))


def compare_whole_lfp_samples(stream, numbers, lfp):
    """A packet has the LFP sample that was finished last; here are those of which no part is lost."""
    came = np.zeros(int(numbers[-1]) + 13, dtype=bool)
    came[numbers] = True
    expected = stream.counts()
    compared = 0
    for packet, last in enumerate(numbers[ROWS - 1 :: ROWS].tolist()):
        sample = (last + 1) // ROWS - 1
        if sample >= 0 and came[sample * ROWS : last + 1].all():
            assert np.array_equal(lfp[packet], expected[sample]), (packet, last)
            compared += 1
    assert compared > 0.8 * len(lfp)


def test_a_start_begins_anew(recordings):
    path = recordings.make("--seconds", "0.6")
    with orbe.open(simulation=path) as box:
        assert box.probes[0].read() is None, "nothing streams yet"
        box.start()
        box.start()  # does nothing
        first = box.probes[0].read(0.05)
        box.stop()
        assert not box.is_running
        box.start()
        again = box.probes[0].read(0.05)
        assert np.array_equal(first.ap, again.ap) and first.sample_numbers[0] == again.sample_numbers[0] == 0
        assert again.lost == 0 and box.probes[0].lost_samples == 0


def test_blocks_end_with_the_recording_and_know_their_times(recordings):
    with orbe.open(simulation=recordings.make("--seconds", "0.6")) as box:
        box.start()
        blocks = list(box.probe(2).blocks(seconds=0.2, timeout=0.4))
        assert [len(block) for block in blocks[:-1]] == [6000, 6000]
        assert blocks[1].seconds[0] == pytest.approx(0.2)
        assert blocks[1].lfp_sample_numbers[:2].tolist() == [6000, 6012]
        assert box.probe(2).read() is None
        with pytest.raises(orbe.OrbeError, match="port 5 has no probe; ports with one: 1, 2, 3, 4"):
            box.probe(5)


def test_a_reader_that_is_late_is_told_what_it_lost(recordings):
    """The library's queue holds 2.05 s, and takes nothing while it is full."""
    with orbe.open(simulation=recordings.make("--seconds", "3", "--ports", "1", "--no-rhd")) as box:
        box.start()
        probe = box.probes[0]
        wait_until(lambda: "dropped" in box.log.read_text(errors="replace"))
        first = probe.read(2.0)
        assert first.lost == 0 and len(first) == 60_000
        rest = list(probe.blocks(0.1, timeout=0.4))
        numbers = joined(rest, "sample_numbers")
        assert probe.lost_samples == sum(block.lost for block in rest) > 0
        assert probe.lost_samples == numbers[-1] + 1 - 60_000 - len(numbers)
        with pytest.raises(ValueError, match="60 s, and not 61"):
            probe.read(61.0)


def wait_until(condition):
    deadline = time.monotonic() + 60
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.01)


def test_settings_decide_on_scales_and_reach_the_probe(recordings):
    with orbe.open(simulation=recordings.make("--seconds", "0.6")) as box:
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


@pytest.mark.parametrize(
    "settings, message",
    [
        ({"ap_gain": 501}, "there is no gain of 501; there are 50, 125, 250, 500, 1000, 1500, 2000, 3000"),
        ({"lfp_gain": [250, 250]}, "give a number, or 384 of them"),
        ({"banks": 3}, "there are the banks 0, 1 and 2"),
        ({"reference": "ground"}, "there is no reference 'ground'; there are external, tip, internal"),
    ],
)
def test_settings_that_a_probe_does_not_have_are_refused(recordings, settings, message):
    with orbe.open(simulation=recordings.make("--seconds", "0.6")) as box:
        with pytest.raises(ValueError, match=message):
            box.probes[0].configure(**settings)
        assert box.probes[0].ap_gains[0] == 500 and box.probes[0].electrodes[0] == 0


def test_a_calibration_is_found_by_the_serial_number_and_applied(recordings, tmp_path):
    path = recordings.make("--seconds", "0.6")
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
    with orbe.open(simulation=recordings.make("--seconds", "0.6")) as box:
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
    path = recordings.make("--seconds", "0.6")
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
    (tmp_path / "here ö.bin").symlink_to(recordings.make("--seconds", "0.6"))
    with orbe.open(simulation="here ö.bin") as box:
        assert len(box.probes) == 4
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
        arguments = [sys.executable, "-c", program, str(recordings.make("--seconds", "0.6")), quiet]
        return subprocess.run(arguments, check=True, capture_output=True, text=True)

    quiet = run("quiet")
    assert quiet.stdout == "mine 3000\n" and quiet.stderr == ""
    assert "ORBE_HOST_MODE file present" in run("loud").stdout


def test_a_program_that_ends_without_closing_leaves_nothing_behind(recordings, tmp_path):
    program = "import sys, orbe; box = orbe.open(simulation=sys.argv[1]); box.start(); print(box.log)"
    arguments = [sys.executable, "-c", program, str(recordings.make("--seconds", "0.6"))]
    environment = {**os.environ, "TMPDIR": str(tmp_path)}
    ended = subprocess.run(arguments, check=True, capture_output=True, text=True, env=environment, timeout=60)
    assert ended.stdout.startswith(str(tmp_path)) and os.listdir(tmp_path) == []
