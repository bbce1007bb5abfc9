"""The streams of a raw file: each looks through the file as far as it is needed."""

from __future__ import annotations

from dataclasses import replace
from typing import Callable, Generic, Optional, Protocol, TypeVar

import numpy as np

from orbe._probe_index import ProbeIndex
from orbe._rhd_index import RhdIndex
from orbe.stream import Channels, Gap, Stream, StreamInfo
from orbe.units import AP_RATE, AP_SAMPLES_PER_LFP_SAMPLE

_STEP = AP_SAMPLES_PER_LFP_SAMPLE
Index = TypeVar("Index", ProbeIndex, RhdIndex)


class IndexedFile(Protocol):
    """The file that the streams share."""

    def index(self) -> None:
        """Looks through all of it."""

    def index_until(self, is_enough: Callable[[], bool]) -> None:
        """Looks through it until `is_enough` answers true."""

    def sync_levels(self, start: int, stop: int) -> np.ndarray:
        """Level of the sync input at AP samples: bool, shape (stop - start,)."""


class RawStream(Stream):
    """A stream whose file is looked through as far as it is needed."""

    def __init__(self, info: StreamInfo, raw: IndexedFile) -> None:
        super().__init__(info)
        self._raw = raw

    def __len__(self) -> int:
        self._raw.index()
        return self._known_end()

    def _known_end(self) -> int:
        raise NotImplementedError

    def _counts(self, start: int, stop: int) -> np.ndarray:
        raise NotImplementedError

    def counts(self, start: int = 0, stop: Optional[int] = None, channels: Channels = None) -> np.ndarray:
        if stop is None or stop < 0 or start < 0:
            return super().counts(start, stop, channels)
        wanted = stop
        self._raw.index_until(lambda: self._known_end() >= wanted)
        last = min(wanted, self._known_end())
        counts = self._counts(min(start, last), last)
        return counts if channels is None else counts[:, channels]


class FullRateStream(RawStream, Generic[Index]):
    """A stream whose samples are those of its index."""

    def __init__(self, info: StreamInfo, raw: IndexedFile, index: Index) -> None:
        super().__init__(info, raw)
        self._index: Index = index

    @property
    def gaps(self) -> list[Gap]:
        self._raw.index()
        return list(self._index.gaps)

    def _known_end(self) -> int:
        return self._index.end

    def _sync_levels(self, start: int, stop: int) -> np.ndarray:
        return self._raw.sync_levels(start, stop)


class ApStream(FullRateStream[ProbeIndex]):
    def _counts(self, start: int, stop: int) -> np.ndarray:
        return self._index.ap(start, stop)


class LfpStream(RawStream):
    def __init__(self, info: StreamInfo, raw: IndexedFile, index: ProbeIndex) -> None:
        super().__init__(replace(info, start_seconds=index.lfp_first / AP_RATE), raw)
        self._index = index

    @property
    def gaps(self) -> list[Gap]:
        self._raw.index()
        end = self._index.lfp_end
        return [
            Gap(gap.sample, min(gap.length, end - gap.sample))
            for gap in self._index.lfp_gaps
            if gap.sample < end
        ]

    def _known_end(self) -> int:
        return self._index.lfp_end

    def _counts(self, start: int, stop: int) -> np.ndarray:
        return self._index.lfp(start, stop)

    def _sync_levels(self, start: int, stop: int) -> np.ndarray:
        first, last = (self._index.lfp_first + sample * _STEP for sample in (start, stop))
        return self._raw.sync_levels(first, last)[::_STEP]


class AdcStream(FullRateStream[RhdIndex]):
    def _counts(self, start: int, stop: int) -> np.ndarray:
        return self._index.inputs(start, stop)
