"""A stream in a recorded folder: a file of 16-bit samples that is mapped into memory, and its table of gaps."""

from __future__ import annotations

import csv
from pathlib import Path
from typing import Optional

import numpy as np

from orbe.errors import RecordingError
from orbe.stream import Gap, Stream, StreamInfo

GAP_TABLE = "gaps.csv"
_SAMPLE_BYTES = 2
_SYNC = 1 << 6


def map_samples(path: Path, columns: int, expected_bytes: Optional[int] = None) -> np.ndarray:
    """The whole file, int16, shape (samples, columns).

    Args:
        expected_bytes: what the metadata say that the file has.

    Raises:
        RecordingError: it cannot be read, or is not as long as it should be.
    """
    try:
        size = path.stat().st_size if path.exists() or expected_bytes else 0
    except OSError as error:
        raise RecordingError(f"'{path}' cannot be read: {error.strerror}") from error
    if size % (columns * _SAMPLE_BYTES) != 0 or expected_bytes not in (None, size):
        raise RecordingError(
            f"'{path}' was not finished: it has {size} bytes, and the metadata say "
            f"{'whole samples' if expected_bytes in (None, size) else expected_bytes}; "
            "orbe-record repair mends the folder"
        )
    if size == 0:
        return np.empty((0, columns), dtype=np.int16)
    try:
        return np.memmap(path, dtype="<i2", mode="r").reshape(-1, columns)
    except OSError as error:
        raise RecordingError(f"'{path}' cannot be read: {error.strerror}") from error


def read_gaps(folder: Path) -> dict[str, list[Gap]]:
    """The table of gaps of a folder, by the streams' names in it; their places in the files, in their order.

    Raises:
        RecordingError: it is damaged.
    """
    path = folder / GAP_TABLE
    gaps: dict[str, list[Gap]] = {}
    try:
        with path.open(newline="", encoding="utf-8") as file:
            for row in csv.DictReader(file):
                gaps.setdefault(row["stream"], []).append(Gap(int(row["sample"]), int(row["length"])))
    except FileNotFoundError:
        return {}
    except (OSError, ValueError, KeyError, TypeError) as error:
        raise RecordingError(f"'{path}' is damaged: {error!r}; orbe-record repair mends the folder") from error
    return {name: sorted(of_stream) for name, of_stream in gaps.items()}


class FolderStream(Stream):
    """A mapped file. `samples` has a column a channel, and further ones behind them, the status last."""

    def __init__(self, info: StreamInfo, samples: np.ndarray, gaps: list[Gap]) -> None:
        super().__init__(info)
        self._samples = samples
        self._gaps = gaps

    @property
    def gaps(self) -> list[Gap]:
        return list(self._gaps)

    def __len__(self) -> int:
        return len(self._samples)

    def _counts(self, start: int, stop: int) -> np.ndarray:
        return np.array(self._samples[start:stop, : self.channel_count])

    def _sync_levels(self, start: int, stop: int) -> np.ndarray:
        return np.asarray(self._samples[start:stop, -1] & _SYNC) != 0
