"""Counters of a raw stream without their wraps, over gaps and new beginnings, as the library follows them."""

from __future__ import annotations

from typing import Optional

import numpy as np

from orbe._super_frames import COUNTER_SPAN, super_frame_numbers

# A longer way ahead is taken for a counter that has begun anew: 8 s.
_LONGEST_GAP = 3 * COUNTER_SPAN
_FRAMES = 13
_STAMP_SPAN = 1 << 32


class SuperFrameCounter:
    """Follows the 20-bit frame counter of a probe."""

    def __init__(self) -> None:
        self._last: Optional[int] = None

    def follow(self, counters: np.ndarray) -> np.ndarray:
        """The numbers (int64, shape (m,)) of super frames whose first frames have these counters."""
        if counters.size == 0:
            return np.empty(0, dtype=np.int64)
        short = super_frame_numbers(counters)
        if self._last is None:
            self._last = int(short[0]) - 1
        steps = np.diff(short, prepend=self._last % COUNTER_SPAN) % COUNTER_SPAN
        steps[steps == 0] = COUNTER_SPAN
        numbers = self._last + np.cumsum(steps)
        is_far = (steps - 1) * _FRAMES > _LONGEST_GAP
        begins_anew = (steps != 1) & ((counters == 0) | (is_far & (counters % _FRAMES == 0)))
        for i in np.flatnonzero(begins_anew):
            numbers[i:] += counters[i] // _FRAMES - numbers[i]
        self._last = int(numbers[-1])
        return numbers


class RhdStampCounter:
    """Follows the 32-bit stamp of the RHD frames, which counts samples."""

    def __init__(self) -> None:
        self._last = 0

    def follow(self, stamps: np.ndarray) -> np.ndarray:
        """The stamps (int64, shape (m,)) without their wraps."""
        if stamps.size == 0:
            return np.empty(0, dtype=np.int64)
        steps = np.diff(stamps.astype(np.int64), prepend=self._last % _STAMP_SPAN) % _STAMP_SPAN
        steps[steps >= _STAMP_SPAN // 2] -= _STAMP_SPAN
        numbers = self._last + np.cumsum(steps)
        self._last = int(numbers[-1])
        return numbers


class SampleCounter:
    """Counts samples from 0: what the counter leaves out is left out, and one that goes back goes on."""

    def __init__(self) -> None:
        self._offset: Optional[int] = None
        self._next = 0

    def follow(self, numbers: np.ndarray) -> np.ndarray:
        """The samples (int64, shape (m,), ascending) that have these numbers of the stream's own counter."""
        if numbers.size == 0:
            return np.empty(0, dtype=np.int64)
        if self._offset is None:
            self._offset = -int(numbers[0])
        samples = numbers + self._offset
        for i in np.flatnonzero(np.diff(samples, prepend=self._next - 1) < 1):
            forward = (self._next if i == 0 else samples[i - 1] + 1) - samples[i]
            samples[i:] += forward
            self._offset += int(forward)
        self._next = int(samples[-1]) + 1
        return samples
