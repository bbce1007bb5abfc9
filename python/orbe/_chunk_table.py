"""What a stream of a raw file keeps of the chunks that have been looked through: which samples each holds, and from
which state it is decoded again."""

from __future__ import annotations

from bisect import bisect_right
from typing import Generic, Iterator, TypeVar

import numpy as np

from orbe.stream import Gap

State = TypeVar("State")


class ChunkTable(Generic[State]):
    """Chunks by their samples, and the gaps between samples, as far as the file has been looked through."""

    def __init__(self) -> None:
        self._chunks: list[tuple[State, int, int]] = []
        self._ends: list[int] = []
        self.gaps: list[Gap] = []
        """Lost samples."""

    @property
    def end(self) -> int:
        """The sample behind the last one that has been found."""
        return self._ends[-1] if self._ends else 0

    def add(self, state: State, end_row: int, samples: np.ndarray) -> None:
        """The next chunk: the state before it, the row behind it, and its samples, which are some."""
        steps = np.diff(samples, prepend=self.end - 1)
        for i in np.flatnonzero(steps > 1):
            length = int(steps[i]) - 1
            self.gaps.append(Gap(int(samples[i]) - length, length))
        self._chunks.append((state, end_row, int(samples[0])))
        self._ends.append(int(samples[-1]) + 1)

    def overlapping(self, start: int, stop: int) -> Iterator[tuple[State, int]]:
        """State before and row behind the chunks that hold samples of a span, in their order."""
        for state, end_row, first in self._chunks[bisect_right(self._ends, start) :]:
            if first >= stop:
                return
            yield state, end_row
