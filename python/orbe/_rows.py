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
        rows = np.memmap(path, dtype="<u2", mode="r", shape=(count, ROW_WORDS)).view(np.ndarray)
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


def rows_of(rows: np.ndarray, stream: int, begin: int, end: int) -> np.ndarray:
    """Indices in the file of the rows of a stream between two rows, int64, ascending."""
    return begin + places_of(stream_bytes(rows[begin:end, 0]), stream)


def stream_bytes(headers: np.ndarray) -> np.ndarray:
    """Marker and stream id of rows with these first words: uint8, same shape."""
    return headers.astype(np.uint8)


def places_of(bytes_of_rows: np.ndarray, stream: int) -> np.ndarray:
    """Where the rows of a stream are among those with these bytes of :func:`stream_bytes`: int64, ascending."""
    return np.flatnonzero(bytes_of_rows == (_MARKER | stream))


def gather(rows: np.ndarray, places: np.ndarray) -> np.ndarray:
    """Rows at these places, one behind the other: uint16, shape (n, 8)."""
    # A row is as long as a complex number, which is copied as a whole.
    return rows.view(np.complex128).reshape(-1)[places].view(np.uint16).reshape(-1, ROW_WORDS)


def counters_of(headers: np.ndarray) -> np.ndarray:
    """Row counters in these first words: uint8, same shape."""
    return (headers >> _COUNTER_SHIFT).astype(np.uint8)


def counter_steps(counters: np.ndarray) -> np.ndarray:
    """How far the row counter goes from each row of one stream to the next, modulo 256: 1 unless rows are lost."""
    return np.diff(counters)


def streams_in(rows: np.ndarray) -> set[int]:
    """Ids of the streams that are in the first MiB."""
    head = stream_bytes(rows[:_LOOKED_AT, 0])
    return {stream for stream in range(RHD_STREAM + 1) if places_of(head, stream).size}
