"""Where in a raw recording the samples of one probe are, and how to get at them. The file is looked through once,
chunk by chunk; a chunk that is read is decoded again, from the state that stood at its beginning."""

from __future__ import annotations

from copy import copy
from dataclasses import dataclass, field
from typing import Iterator, NamedTuple

import numpy as np

from orbe import _rows
from orbe._chunk_table import ChunkTable
from orbe._counters import SampleCounter, SuperFrameCounter
from orbe._super_frames import CHANNEL_SLOT, ROWS, SLOTS, ap_values, find_super_frames, lfp_parts
from orbe.stream import Gap
from orbe.units import CHANNEL_COUNT

_START_FLAG = 0x0800
# The converter's 0, which is what channels have before their first LFP sample.
_LOWEST = -512
# A super frame whose end is not there so many rows later is waited for no longer.
_LONGEST_WAIT = 1 << 20


@dataclass
class _State:
    """What a chunk needs of those before it."""

    row: int = 0  # the first one that belongs to it
    super_frames: SuperFrameCounter = field(default_factory=SuperFrameCounter)
    samples: SampleCounter = field(default_factory=SampleCounter)
    lfp: np.ndarray = field(default_factory=lambda: np.full(CHANNEL_COUNT, _LOWEST, dtype=np.int16))

    def copy(self) -> _State:
        return _State(self.row, copy(self.super_frames), copy(self.samples), self.lfp)


class _Scan(NamedTuple):
    """The super frames of a chunk: shape (m,) each."""

    port_rows: np.ndarray
    starts: np.ndarray
    slots: np.ndarray
    samples: np.ndarray
    damaged: int


class ProbeIndex(ChunkTable[_State]):
    """One probe of a raw recording. `rows` is the whole file, `stream` the port less one."""

    def __init__(self, rows: np.ndarray, stream: int) -> None:
        super().__init__()
        self._rows = rows
        self._stream = stream
        self._state = _State()
        self._lfp_first = 0
        self.damaged_super_frames = 0

    @property
    def lfp_end(self) -> int:
        """The LFP sample behind the last whole one that has been found."""
        return max(0, (self.end - self._lfp_first) // SLOTS)

    @property
    def lfp_first(self) -> int:
        """The AP sample at which LFP sample 0 begins."""
        return self._lfp_first

    @property
    def lfp_gaps(self) -> list[Gap]:
        """LFP samples of which nothing is there."""
        gaps = []
        for gap in self.gaps:
            first = max(0, -(-(gap.sample - self._lfp_first) // SLOTS))
            last = (gap.sample + gap.length - self._lfp_first) // SLOTS
            if last > first:
                gaps.append(Gap(first, last - first))
        return gaps

    def extend(self, end_row: int, places: np.ndarray) -> None:
        """Looks through the rows up to `end_row`; those at `places` are the stream's that no call before had."""
        begin, is_first = self._state.copy(), self.end == 0
        first = int(places[0]) if places.size else end_row
        early = _rows.rows_of(self._rows, self._stream, self._state.row, first)
        scan = self._scan(self._state, end_row, np.concatenate((early, places)))
        self.damaged_super_frames += scan.damaged
        if not scan.samples.size:
            return
        if is_first:
            self._lfp_first = int(-scan.slots[0] % SLOTS)
        self._remember_lfp(scan)
        self.add(begin, end_row, scan.samples)

    def ap(self, start: int, stop: int) -> np.ndarray:
        """AP counts, int16, shape (stop - start, 384), 0 where samples are lost."""
        counts = np.zeros((stop - start, CHANNEL_COUNT), dtype=np.int16)
        for _, scan in self._scans(start, stop):
            inside = slice(*np.searchsorted(scan.samples, (start, stop)))
            counts[scan.samples[inside] - start] = ap_values(scan.port_rows, scan.starts[inside])
        return counts

    def lfp(self, start: int, stop: int) -> np.ndarray:
        """LFP counts, int16, shape (stop - start, 384), 0 where nothing of a sample is there.

        The channels of a part that is lost keep the values from before.
        """
        counts = np.zeros((stop - start, CHANNEL_COUNT), dtype=np.int16)
        has_part = np.zeros((stop - start, SLOTS), dtype=bool)
        before = None
        for state, scan in self._scans(self._lfp_first + start * SLOTS, self._lfp_first + stop * SLOTS):
            if before is None:
                before = state.lfp.copy()
            sample = (scan.samples - scan.slots - self._lfp_first) // SLOTS
            early = np.flatnonzero(sample < start)[-SLOTS * 2 :]
            _keep_latest(before, scan, early)
            inside = np.flatnonzero((sample >= start) & (sample < stop))
            parts = lfp_parts(scan.port_rows, scan.starts[inside])
            for slot in range(SLOTS):
                of_slot = scan.slots[inside] == slot
                target = sample[inside][of_slot] - start
                channels = np.flatnonzero(CHANNEL_SLOT == slot)
                counts[target[:, np.newaxis], channels] = parts[of_slot][:, channels]
                has_part[target, slot] = True
        if before is not None:
            _fill_lost_parts(counts, has_part, before)
        return counts

    def _scans(self, start: int, stop: int) -> Iterator[tuple[_State, _Scan]]:
        for state, end_row in self.overlapping(start, stop):
            places = _rows.rows_of(self._rows, self._stream, state.row, end_row)
            yield state, self._scan(state.copy(), end_row, places)

    def _scan(self, state: _State, end_row: int, places: np.ndarray) -> _Scan:
        port_rows = _rows.gather(self._rows, places)
        starts, counters, damaged = find_super_frames(port_rows)
        numbers = state.super_frames.follow(counters)
        samples = state.samples.follow(numbers)
        state.row = self._first_row_of_next(end_row, places, port_rows)
        return _Scan(port_rows, starts, numbers % SLOTS, samples, damaged)

    @staticmethod
    def _first_row_of_next(end_row: int, places: np.ndarray, port_rows: np.ndarray) -> int:
        """The row with which the super frame that ends in the next chunk begins."""
        tail = port_rows[-(ROWS - 1) :]
        unfinished = np.flatnonzero(tail[:, 1] & _START_FLAG)
        if not unfinished.size:
            return end_row
        row = int(places[len(port_rows) - len(tail) + unfinished[0]])
        return row if end_row - row < _LONGEST_WAIT else end_row

    def _remember_lfp(self, scan: _Scan) -> None:
        latest = self._state.lfp.copy()
        slots_from_the_end = scan.slots[::-1]
        _, last = np.unique(slots_from_the_end, return_index=True)
        _keep_latest(latest, scan, np.sort(len(scan.slots) - 1 - last))
        self._state.lfp = latest


def _keep_latest(values: np.ndarray, scan: _Scan, which: np.ndarray) -> None:
    """Puts the LFP parts of these super frames, the oldest first, over `values`, shape (384,)."""
    parts = lfp_parts(scan.port_rows, scan.starts[which])
    for part, slot in zip(parts, scan.slots[which]):
        channels = CHANNEL_SLOT == slot
        values[channels] = part[channels]


def _fill_lost_parts(counts: np.ndarray, has_part: np.ndarray, before: np.ndarray) -> None:
    is_there = has_part.any(axis=1)
    if has_part[is_there].all():
        return
    with_before = np.concatenate((before[np.newaxis], counts))
    for slot in np.flatnonzero(~has_part[is_there].all(axis=0)):
        channels = np.flatnonzero(CHANNEL_SLOT == slot)
        known = np.append(True, has_part[:, slot])
        source = np.maximum.accumulate(np.where(known, np.arange(known.size), 0))[1:]
        lost = np.flatnonzero(is_there & ~has_part[:, slot])
        counts[lost[:, np.newaxis], channels] = with_before[source[lost][:, np.newaxis], channels]
