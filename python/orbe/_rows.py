"""The rows of 16 bytes that the box's raw stream is made of (docs/dma-rows.md)."""

from __future__ import annotations

from pathlib import Path

import numpy as np

from orbe.errors import RecordingError

ROW_BYTES = 16
ROW_WORDS = 8
PAYLOAD_WORDS = 7
PORTS = (1, 2, 3, 4)
RHD_STREAM = 4
"""Stream id of the ADC inputs; that of a probe is its port less one."""

_MARKER = 0xD0
_MARKER_MASK = 0xF0
_STREAM_MASK = 0x0F
_ID_MASK = 0xFF
_COUNTER_SHIFT = 8
# Where a recording is told from another file: as many rows as lie in 1 MiB.
_LOOKED_AT = 65_536


def map_rows(path: Path) -> np.ndarray:
    """The file's whole rows, memory-mapped: uint16, shape (rows, 8); word 0 is marker, stream id and counter.

    Raises:
        RecordingError: the file cannot be read, is shorter than a row, or holds something else than rows.
    """
    try:
        count = path.stat().st_size // ROW_BYTES
        if count == 0:
            raise RecordingError(f"'{path}' is no raw recording: it does not hold a single row of 16 bytes")
        rows = np.memmap(path, dtype="<u2", mode="r", shape=(count, ROW_WORDS))
    except OSError as error:
        raise RecordingError(f"'{path}' cannot be read: {error.strerror or error}") from error
    head = rows[:_LOOKED_AT, 0]
    plausible = int(np.count_nonzero(has_marker(head) & ((head & _STREAM_MASK) <= RHD_STREAM)))
    if plausible * 2 < head.size:
        raise RecordingError(
            f"'{path}' is no raw recording of this box: of its first {head.size} rows {plausible} have the "
            "marker and a known stream id"
        )
    return rows


def has_marker(headers: np.ndarray) -> np.ndarray:
    """Which rows with these first words bear the marker: bool, same shape."""
    return (headers & _MARKER_MASK) == _MARKER


def is_known(headers: np.ndarray) -> np.ndarray:
    """Which rows with these first words belong to a stream that there is: bool, same shape."""
    return has_marker(headers) & ((headers & _STREAM_MASK) <= RHD_STREAM)


def rows_of(headers: np.ndarray, stream: int) -> np.ndarray:
    """Indices of the rows of a stream, int64, ascending."""
    return np.flatnonzero((headers & _ID_MASK) == (_MARKER | stream))


def counter_steps(headers: np.ndarray) -> np.ndarray:
    """How far the row counter goes from each row of one stream to the next: 1 unless rows are lost."""
    counters = (headers >> _COUNTER_SHIFT).astype(np.int16)
    return np.diff(counters) & _ID_MASK


def streams_in(rows: np.ndarray) -> set[int]:
    """Ids of the streams that are in the first MiB."""
    head = rows[:_LOOKED_AT, 0]
    return {stream for stream in range(RHD_STREAM + 1) if rows_of(head, stream).size}
