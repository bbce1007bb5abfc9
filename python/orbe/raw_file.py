"""The box's own stream in a file (``raw_data.bin``, ``orbe-recording make``), decoded without the library."""

from __future__ import annotations

from dataclasses import replace
from pathlib import Path
from typing import Callable, Optional, Union

import numpy as np

from orbe._probe_index import ProbeIndex
from orbe._raw_index import Damage, RawIndex
from orbe._rhd_index import INPUTS, RhdIndex
from orbe._rows import ROW_BYTES, map_rows
from orbe._stream_infos import adc_info, ap_info, lfp_info
from orbe.description import Description, read_description
from orbe.errors import RecordingError
from orbe.recording import Recording
from orbe.stream import Channels, Gap, Stream, StreamInfo
from orbe.units import AP_RATE, AP_SAMPLES_PER_LFP_SAMPLE

_FIRST_TTL_BIT = 8
_STEP = AP_SAMPLES_PER_LFP_SAMPLE


class _RawStream(Stream):
    """A stream whose file is looked through as far as it is needed."""

    def __init__(self, info: StreamInfo, raw: RawFile) -> None:
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


class _ApStream(_RawStream):
    def __init__(self, info: StreamInfo, raw: RawFile, index: ProbeIndex) -> None:
        super().__init__(info, raw)
        self._index = index

    @property
    def gaps(self) -> list[Gap]:
        self._raw.index()
        return list(self._index.gaps)

    def _known_end(self) -> int:
        return self._index.end

    def _counts(self, start: int, stop: int) -> np.ndarray:
        return self._index.ap(start, stop)

    def _sync_levels(self, start: int, stop: int) -> np.ndarray:
        return self._raw._sync(start, stop)


class _LfpStream(_RawStream):
    def __init__(self, info: StreamInfo, raw: RawFile, index: ProbeIndex) -> None:
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
        return self._raw._sync(first, last)[::_STEP]


class _AdcStream(_RawStream):
    def __init__(self, info: StreamInfo, raw: RawFile, index: RhdIndex) -> None:
        super().__init__(info, raw)
        self._index = index

    @property
    def gaps(self) -> list[Gap]:
        self._raw.index()
        return list(self._index.gaps)

    def _known_end(self) -> int:
        return self._index.end

    def _counts(self, start: int, stop: int) -> np.ndarray:
        return self._index.inputs(start, stop)

    def _sync_levels(self, start: int, stop: int) -> np.ndarray:
        return self._raw._sync(start, stop)


class RawFile(Recording):
    """A raw recording. Opening looks at its first MiB only; what is read decides how much more is looked through.

    Sample 0 of a stream is the first whole one in the file. Values are those of the converters: the gain calibration
    of a probe is not applied. Samples of damaged super frames and frames are left out, and are gaps.

    Args:
        path: the file.
        description: gains, electrodes and so on; those of ``orbe_recording.json`` beside the file without it, and
            the box's own settings (AP gain 500, LFP gain 250, bank 0, ± 5 V) where there is none.

    Raises:
        RecordingError: the file cannot be read or is no raw recording.
    """

    def __init__(self, path: Union[str, Path], description: Optional[Description] = None) -> None:
        self._path = Path(path)
        rows = map_rows(self._path)
        self._index = RawIndex(rows)
        self._row_count = len(rows)
        found = description or read_description(self._path.parent)
        described = found or Description.of_unknown(tuple(self._index.probes))
        super().__init__(self._path, "raw", described, self._make_streams(described))
        self._is_described = found is not None

    @property
    def is_described(self) -> bool:
        """Whether gains and electrodes are known; otherwise they are assumed."""
        return self._is_described

    @property
    def damage(self) -> Damage:
        """What is wrong with the file. Looks through all of it."""
        self.index()
        return self._index.damage

    def index(self, progress: Optional[Callable[[int, int], None]] = None) -> None:
        """Looks through the rest of the file, which tells lengths, gaps and damage.

        Args:
            progress: called every 8 MiB with the bytes done and the bytes in all.
        """
        while not self._index.is_complete:
            self._index.extend()
            if progress is not None:
                progress(self._index.rows_looked_at * ROW_BYTES, self._row_count * ROW_BYTES)

    def index_until(self, is_enough: Callable[[], bool]) -> None:
        """Looks through the file until `is_enough` answers true, or to its end."""
        while not self._index.is_complete and not is_enough():
            self._index.extend()

    def ttl(self, start: int, stop: int) -> np.ndarray:
        """The TTL inputs 1 to 8 at samples of the stream ``adc``: bool, shape (samples, 8).

        Raises:
            RecordingError: the recording has no ADC inputs.
        """
        rhd = self._index.rhd
        if rhd is None:
            raise RecordingError(f"'{self.path}' has no ADC inputs, and no TTL inputs with them")
        inputs = rhd
        self.index_until(lambda: inputs.end >= stop)
        last = min(stop, inputs.end)
        words = inputs.ttl(min(start, last), last)
        return (words[:, np.newaxis] >> (_FIRST_TTL_BIT + np.arange(8)) & 1).astype(bool)

    def _sync(self, start: int, stop: int) -> np.ndarray:
        levels = np.zeros(stop - start, dtype=bool)
        known = self.ttl(start, stop)[:, 0]
        levels[: len(known)] = known
        return levels

    def _make_streams(self, described: Description) -> list[Stream]:
        streams: list[Stream] = []
        for port, index in self._index.probes.items():
            self.index_until(lambda: index.end > 0)
            probe = described.probe(port)
            streams.append(_ApStream(ap_info(described, probe), self, index))
            streams.append(_LfpStream(lfp_info(described, probe), self, index))
        if self._index.rhd is not None:
            streams.append(_AdcStream(adc_info(described, INPUTS), self, self._index.rhd))
        return streams
