"""The box's own stream in a file (``raw_data.bin``, ``orbe-recording make``), decoded without the library."""

from __future__ import annotations

from dataclasses import replace
from pathlib import Path
from typing import Callable, Optional, Union

import numpy as np

from orbe._raw_index import Damage, RawIndex
from orbe._raw_streams import AdcStream, ApStream, LfpStream
from orbe._rhd_index import INPUTS
from orbe._rows import ROW_BYTES, map_rows
from orbe._stream_infos import adc_info, ap_info, lfp_info
from orbe.description import Description, read_description
from orbe.errors import RecordingError
from orbe.recording import Recording
from orbe.stream import Stream

_FIRST_TTL_BIT = 8


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
        # The file begins with the stream, wherever the packets of the program that recorded it began.
        described = replace(found or Description.of_unknown(tuple(self._index.probes)), first_sample=0)
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

    def sync_levels(self, start: int, stop: int) -> np.ndarray:
        """Level of the sync input at AP samples: bool, shape (stop - start,); False where it is not known."""
        levels = np.zeros(stop - start, dtype=bool)
        known = self.ttl(start, stop)[:, 0]
        levels[: len(known)] = known
        return levels

    def _make_streams(self, described: Description) -> list[Stream]:
        streams: list[Stream] = []
        for port, index in self._index.probes.items():
            self.index_until(lambda: index.end > 0)
            probe = described.probe(port)
            streams.append(ApStream(ap_info(described, probe), self, index))
            streams.append(LfpStream(lfp_info(described, probe), self, index))
        if self._index.rhd is not None:
            streams.append(AdcStream(adc_info(described, INPUTS), self, self._index.rhd))
        return streams
