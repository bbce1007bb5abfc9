"""The counters of raw streams, held against the same rules written out step by step."""

from copy import copy

import numpy as np
import pytest
from orbe._counters import RhdStampCounter, SampleCounter, SuperFrameCounter
from orbe._stamps import StampCounter, sample_numbers_of

SPAN = 1 << 20


class StepByStep:
    """The rules for one super frame after the other."""

    def __init__(self):
        self.next = 0

    def follow(self, counter):
        count = self.next if counter == self.next % SPAN else self._resume(counter)
        self.next = count + 13
        return count // 13

    def _resume(self, counter):
        ahead = self.next // SPAN * SPAN + counter
        while ahead < self.next or ahead % 13 != 0:
            ahead += SPAN
        is_anew = counter == 0 or (counter % 13 == 0 and ahead - self.next > 3 * SPAN)
        return counter if is_anew else ahead


def pieces_of(array, seed):
    cuts = np.sort(np.random.default_rng(seed).integers(0, len(array), 5))
    return np.split(array, cuts)


@pytest.mark.parametrize("first", [0, 1, 80_659, 80_660, 1_048_575])
def test_super_frames_are_followed_over_the_wraps_of_the_counter(first):
    numbers = np.arange(first, first + 250_000)
    counters = numbers * 13 % SPAN
    reference = StepByStep()
    expected = np.array([reference.follow(int(counter)) for counter in counters])
    counter = SuperFrameCounter()
    followed = np.concatenate([counter.follow(piece) for piece in pieces_of(counters, first)])
    assert np.array_equal(followed, expected)
    assert np.array_equal(np.diff(followed), np.ones(len(followed) - 1))


@pytest.mark.parametrize("seed", range(20))
def test_super_frames_are_followed_over_gaps_and_new_beginnings(seed):
    random = np.random.default_rng(seed)
    numbers = []
    at = 0
    for _ in range(30):
        length = int(random.integers(1, 2000))
        numbers.append(np.arange(at, at + length))
        at += length
        way = random.integers(0, 4)
        if way == 0:
            at += int(random.integers(1, 200))
        elif way == 1:
            at += int(random.integers(1, 1_000_000))
        elif way == 2:
            at = int(random.integers(0, 3))
    counters = np.concatenate(numbers) * 13 % SPAN
    reference = StepByStep()
    expected = np.array([reference.follow(int(counter)) for counter in counters])
    counter = SuperFrameCounter()
    followed = np.concatenate([counter.follow(piece) for piece in pieces_of(counters, seed)])
    assert np.array_equal(followed, expected)


def test_a_super_frame_that_comes_twice_is_what_the_rules_make_of_it():
    counters = np.array([0, 13, 26, 26, 39])
    reference = StepByStep()
    expected = [reference.follow(counter) for counter in counters.tolist()]
    assert SuperFrameCounter().follow(counters).tolist() == expected


def test_a_copy_of_a_counter_goes_on_by_itself():
    counter = SuperFrameCounter()
    counter.follow(np.array([0, 13]))
    other = copy(counter)
    assert other.follow(np.array([26])).tolist() == [2]
    assert counter.follow(np.array([39])).tolist() == [3]


def test_rhd_stamps_are_followed_over_their_wrap_and_back():
    counter = RhdStampCounter()
    assert counter.follow(np.array([4_294_967_294, 4_294_967_295, 0], dtype=np.uint32)).tolist() == [-2, -1, 0]
    assert counter.follow(np.array([1, 5, 3], dtype=np.uint32)).tolist() == [1, 5, 3]


def test_samples_count_from_0_keep_gaps_and_go_on_where_the_counter_goes_back():
    counter = SampleCounter()
    assert counter.follow(np.array([100, 101, 105])).tolist() == [0, 1, 5]
    assert counter.follow(np.array([106, 0, 1, 4])).tolist() == [6, 7, 8, 11]
    assert counter.follow(np.array([2])).tolist() == [12]
    assert counter.follow(np.empty(0, dtype=np.int64)).size == 0


def test_stamps_of_packets_are_sample_numbers():
    samples = np.arange(100_000)
    assert np.array_equal(sample_numbers_of(samples * 10 // 3), samples)


def test_stamps_of_packets_are_followed_over_their_wrap():
    samples = np.arange(1_288_490_180, 1_288_490_380)
    stamps = (samples * 10 // 3 % (1 << 32)).astype(np.uint32)
    assert stamps.max() > 4_000_000_000 and stamps.min() < 1000
    counter = StampCounter()
    followed = [counter.follow(piece) for piece in pieces_of(stamps, 1)]
    assert np.array_equal(np.concatenate(followed), samples)
