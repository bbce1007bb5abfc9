"""Samples of the box, played from a recording, as Python gets them; what comes is held against the raw file, which is
decoded without the library."""

import time
from pathlib import Path

import numpy as np
import orbe
import pytest
from orbe.packets import ROWS

# Two ports for 0.3 s.
SMALL = ("--seconds", "0.3", "--ports", "1,2")
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
    path = recordings.make("--seconds", "0.5", *DAMAGE)
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
    path = recordings.make(*SMALL)
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
    with orbe.open(simulation=recordings.make(*SMALL)) as box:
        box.start()
        blocks = list(box.probe(2).blocks(seconds=0.1, timeout=0.4))
        assert [len(block) for block in blocks[:-1]] == [3000, 3000]
        assert blocks[1].seconds[0] == pytest.approx(0.1)
        assert blocks[1].lfp_sample_numbers[:2].tolist() == [3000, 3012]
        assert box.probe(2).read() is None
        with pytest.raises(orbe.OrbeError, match="port 5 has no probe; ports with one: 1, 2"):
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
