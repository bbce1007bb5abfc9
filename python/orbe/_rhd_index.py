"""Where in a raw recording the samples of the ADC inputs are, and how to get at them (docs/rhd-frame.md)."""

from __future__ import annotations

from copy import copy
from dataclasses import dataclass, field
from typing import Iterator, NamedTuple

import numpy as np

from orbe import _rows
from orbe._chunk_table import ChunkTable
from orbe._counters import RhdStampCounter, SampleCounter
from orbe._rows import PAYLOAD_WORDS, RHD_STREAM
from orbe.errors import RecordingError

INPUTS = 8
_PREAMBLE = (0x2A53, 0x3813, 0x2AAA, 0xD7A2)
# At the end of words that have come, a preamble may begin that does not show yet.
_UNSEEN = len(_PREAMBLE) - 1
_STAMP = 4
_MOST_STREAMS = 32
_OFFSET = 0x8000
# From the end of a frame: the inputs, the TTL inputs and the TTL outputs.
_FROM_INPUTS = 12
_FROM_TTL = 4
# A frame whose end is not there so many rows later is waited for no longer.
_LONGEST_WAIT = 1 << 20


def frame_words(streams: int) -> int:
    """Words of a frame when so many RHD streams are enabled."""
    return 20 + 35 * streams + streams % 4


_LENGTHS = {frame_words(streams) for streams in range(_MOST_STREAMS + 1)}


@dataclass
class _State:
    row: int = 0
    word: int = 0  # of that row's payload, the first one that is not read
    stamps: RhdStampCounter = field(default_factory=RhdStampCounter)
    samples: SampleCounter = field(default_factory=SampleCounter)

    def copy(self) -> _State:
        return _State(self.row, self.word, copy(self.stamps), copy(self.samples))


class _Scan(NamedTuple):
    words: np.ndarray
    starts: np.ndarray
    samples: np.ndarray
    damaged: int


class RhdIndex(ChunkTable[_State]):
    """The ADC inputs of a raw recording. `rows` is the whole file."""

    def __init__(self, rows: np.ndarray) -> None:
        super().__init__()
        self._rows = rows
        self._length = _find_frame_length(rows)
        self._state = _State()
        self.damaged_frames = 0

    def extend(self, end_row: int, places: np.ndarray) -> None:
        """Looks through the rows up to `end_row`; those at `places` are the stream's that no call before had."""
        begin = self._state.copy()
        first = int(places[0]) if places.size else end_row
        early = _rows.rows_of(self._rows, RHD_STREAM, self._state.row, first)
        scan = self._scan(self._state, end_row, np.concatenate((early, places)))
        self.damaged_frames += scan.damaged
        if scan.samples.size:
            self.add(begin, end_row, scan.samples)

    def inputs(self, start: int, stop: int) -> np.ndarray:
        """Counts of the eight inputs, int16, shape (stop - start, 8), 0 where samples are lost."""
        counts = np.zeros((stop - start, INPUTS), dtype=np.int16)
        places = np.arange(self._length - _FROM_INPUTS, self._length - _FROM_TTL)
        for scan in self._scans(start, stop):
            inside = slice(*np.searchsorted(scan.samples, (start, stop)))
            values = scan.words[scan.starts[inside, np.newaxis] + places] + np.uint16(_OFFSET)
            counts[scan.samples[inside] - start] = values.view(np.int16)
        return counts

    def ttl(self, start: int, stop: int) -> np.ndarray:
        """Words of the TTL inputs, uint32, shape (stop - start,), 0 where samples are lost."""
        words = np.zeros(stop - start, dtype=np.uint32)
        for scan in self._scans(start, stop):
            inside = slice(*np.searchsorted(scan.samples, (start, stop)))
            places = scan.starts[inside] + self._length - _FROM_TTL
            words[scan.samples[inside] - start] = _double_words(scan.words, places)
        return words

    def _scans(self, start: int, stop: int) -> Iterator[_Scan]:
        for state, end_row in self.overlapping(start, stop):
            places = _rows.rows_of(self._rows, RHD_STREAM, state.row, end_row)
            yield self._scan(state.copy(), end_row, places)

    def _scan(self, state: _State, end_row: int, places: np.ndarray) -> _Scan:
        rhd_rows = _rows.gather(self._rows, places)
        words = rhd_rows[:, 1:].reshape(-1)
        starts = _find_preambles(words)
        starts = starts[starts >= state.word]
        # Whether a frame ends too early shows only when all of a preamble in it is there.
        known = len(words) if end_row == len(self._rows) else len(words) - _UNSEEN
        is_whole = starts + self._length <= known
        whole = starts[is_whole]
        kept = self._without_damaged(rhd_rows, whole, np.append(starts[1:], len(words))[is_whole])
        numbers = state.stamps.follow(_double_words(words, kept + _STAMP))
        samples = state.samples.follow(numbers)
        self._resume(state, end_row, places, starts[~is_whole])
        return _Scan(words, kept, samples, len(whole) - len(kept))

    def _without_damaged(self, rhd_rows: np.ndarray, starts: np.ndarray, behind: np.ndarray) -> np.ndarray:
        """Leaves out the frames with a lost row in them, and those that end too early: where the next begins."""
        is_cut = behind - starts < self._length
        steps = _rows.counter_steps(_rows.counters_of(rhd_rows[:, 0]))
        if (steps != 1).any():
            before = np.concatenate(([0], np.cumsum(steps != 1)))
            first_row = starts // PAYLOAD_WORDS
            last_row = (starts + self._length - 1) // PAYLOAD_WORDS
            is_cut |= before[last_row] != before[first_row]
        return starts[~is_cut]

    def _resume(self, state: _State, end_row: int, places: np.ndarray, unfinished: np.ndarray) -> None:
        """The next chunk begins with the first frame that is not whole, or the words that may begin one."""
        words = len(places) * PAYLOAD_WORDS
        behind = int(unfinished[0]) if unfinished.size else max(state.word, words - _UNSEEN)
        row = end_row if behind >= words else int(places[behind // PAYLOAD_WORDS])
        if end_row - row >= _LONGEST_WAIT:
            row = end_row
        state.row, state.word = row, behind % PAYLOAD_WORDS if row < end_row else 0


def _find_preambles(words: np.ndarray) -> np.ndarray:
    if len(words) < len(_PREAMBLE):
        return np.empty(0, dtype=np.int64)
    places = np.flatnonzero(words[: -len(_PREAMBLE) + 1] == _PREAMBLE[0])
    for i, word in enumerate(_PREAMBLE[1:], start=1):
        places = places[words[places + i] == word]
    return places


def _double_words(words: np.ndarray, places: np.ndarray) -> np.ndarray:
    return words[places + 1].astype(np.uint32) << 16 | words[places]


def _find_frame_length(rows: np.ndarray) -> int:
    """The words from one frame to the next, as most frames of the first MiB have them."""
    places = _rows.rows_of(rows, RHD_STREAM, 0, 65_536)
    words = _rows.gather(rows, places)[:, 1:].reshape(-1)
    starts = _find_preambles(words)
    if starts.size < 2:
        return frame_words(0)
    lengths, counts = np.unique(np.diff(starts), return_counts=True)
    length = int(lengths[np.argmax(counts)])
    if length not in _LENGTHS:
        raise RecordingError(f"the frames of the ADC inputs are {length} words apart, which no setting makes")
    return length
