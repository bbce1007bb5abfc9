"""Waiting for a stream, with one that brings what the test says."""

import numpy as np
import orbe
import pytest
from orbe._live_stream import LiveStream


class Scripted(LiveStream):
    """Brings so many packets at each look; a block is their number."""

    def __init__(self, script, is_simulated=False):
        super().__init__("the stream", packet_rate=100.0, is_simulated=is_simulated)
        self.script = list(script)

    def available(self):
        return self.script[0] if self.script else 0

    def _take(self, wanted, wait):
        count, came = 0, 1
        while count < wanted and wait.goes_on(came > 0):
            came = min(self.script.pop(0) if self.script else 0, wanted - count)
            count += came
        return count or None


def test_a_block_is_put_together_of_what_comes():
    assert Scripted([3, 0, 4, 0, 9]).read(0.1, timeout=1.0) == 10
    assert Scripted([7, 9]).read() == 7
    assert Scripted([]).read() is None


def test_a_box_that_brings_nothing_is_an_error_but_not_before_what_came_is_answered():
    stream = Scripted([3, 4])
    assert stream.read(0.1, timeout=0.01) == 7
    with pytest.raises(orbe.StreamStalled, match="the stream has brought nothing for 0.01 s"):
        stream.read(0.1, timeout=0.01)


def test_a_recording_that_is_over_ends_the_blocks():
    assert list(Scripted([10, 10, 3], is_simulated=True).blocks(0.1, timeout=0.01)) == [10, 10, 3]


@pytest.mark.parametrize("seconds", [0.0, -1.0, 60.5, float("nan")])
def test_lengths_that_are_none_are_refused(seconds):
    with pytest.raises(ValueError, match="a block has up to 60 s"):
        Scripted([]).read(seconds)


def test_losses_are_counted_from_the_stamps():
    stream = Scripted([])
    stamps = np.arange(0, 24) * 10 // 3
    assert stream._follow(stamps[7:12])[1] == 0, "up to eleven samples before the first whole packet"
    numbers, lost = stream._follow(stamps[[14, 15, 18]])
    assert numbers.tolist() == [14, 15, 18] and lost == 4 and stream.lost_samples == 4
    stream._begin_run()
    assert stream._follow(stamps[12:14])[1] == 12 and stream.lost_samples == 12
