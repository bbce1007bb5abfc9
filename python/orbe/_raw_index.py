"""Looks through a raw recording once, from its beginning and only as far as it is asked for, on behalf of all its
streams; and counts what is wrong with it."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Optional

import numpy as np

from orbe import _rows
from orbe._probe_index import ProbeIndex
from orbe._rhd_index import RhdIndex

# 8 MiB: small enough for a processor's caches, large enough for arrays.
_CHUNK_ROWS = 1 << 19


@dataclass
class Damage:
    """What is wrong with a raw recording, as far as it has been looked through.

    Attributes:
        lost_rows: of each stream id, by the row counters, which cannot tell of a multiple of 256 rows.
        rows_without_marker: rows that bear no marker.
        unknown_rows: rows of a stream that there is not.
        super_frames: of each port, found and left out because something in them is wrong.
        rhd_frames: found and left out because rows are lost in them.
    """

    lost_rows: dict[int, int] = field(default_factory=dict)
    rows_without_marker: int = 0
    unknown_rows: int = 0
    super_frames: dict[int, int] = field(default_factory=dict)
    rhd_frames: int = 0

    def __bool__(self) -> bool:
        return bool(
            self.lost_rows
            or self.rows_without_marker
            or self.unknown_rows
            or any(self.super_frames.values())
            or self.rhd_frames
        )

    def __str__(self) -> str:
        parts = [_counted(count, f"row of {_name_of(stream)}", "lost") for stream, count in self.lost_rows.items()]
        parts.append(_counted(self.rows_without_marker, "row", "without marker"))
        parts.append(_counted(self.unknown_rows, "row", "of no known stream"))
        for port, count in self.super_frames.items():
            parts.append(_counted(count, f"super frame of port {port}", "damaged"))
        parts.append(_counted(self.rhd_frames, "frame of the ADC inputs", "damaged"))
        return ", ".join(part for part in parts if part) or "nothing is damaged"


def _counted(count: int, what: str, state: str) -> str:
    noun, _, rest = what.partition(" of ")
    plural = noun if count == 1 else noun + "s"
    return f"{count} {plural} {'of ' + rest + ' ' if rest else ''}{state}" if count else ""


def _name_of(stream: int) -> str:
    return "the ADC inputs" if stream == _rows.RHD_STREAM else f"port {stream + 1}"


class RawIndex:
    """The streams of a mapped raw recording (uint16, shape (rows, 8))."""

    def __init__(self, rows: np.ndarray) -> None:
        self._mapped = rows
        self._next_row = 0
        self._last_counter: dict[int, np.ndarray] = {}
        self._damage = Damage()
        present = _rows.streams_in(rows)
        self.probes = {stream + 1: ProbeIndex(rows, stream) for stream in sorted(present - {_rows.RHD_STREAM})}
        self.rhd: Optional[RhdIndex] = RhdIndex(rows) if _rows.RHD_STREAM in present else None

    @property
    def is_complete(self) -> bool:
        """Whether the whole file has been looked through."""
        return self._next_row == len(self._mapped)

    @property
    def rows_looked_at(self) -> int:
        return self._next_row

    @property
    def damage(self) -> Damage:
        """What has been found so far."""
        self._damage.super_frames = {port: index.damaged_super_frames for port, index in self.probes.items()}
        self._damage.rhd_frames = self.rhd.damaged_frames if self.rhd else 0
        return self._damage

    def extend(self) -> None:
        """Looks through the next 8 MiB. Does nothing at the end of the file."""
        if self.is_complete:
            return
        begin, end = self._next_row, min(self._next_row + _CHUNK_ROWS, len(self._mapped))
        headers = np.ascontiguousarray(self._mapped[begin:end, 0])
        ids = _rows.stream_bytes(headers)
        places = [_rows.places_of(ids, stream) for stream in range(_rows.RHD_STREAM + 1)]
        self._look_for_damage(headers, places)
        for port, index in self.probes.items():
            index.extend(end, begin + places[port - 1])
        if self.rhd is not None:
            self.rhd.extend(end, begin + places[_rows.RHD_STREAM])
        self._next_row = end

    def _look_for_damage(self, headers: np.ndarray, places: list[np.ndarray]) -> None:
        counters = _rows.counters_of(headers)
        for stream, own in enumerate(places):
            if not own.size:
                continue
            of_stream = counters[own]
            if stream in self._last_counter:
                of_stream = np.concatenate((self._last_counter[stream], of_stream))
            steps = _rows.counter_steps(of_stream)
            if (steps != 1).any():
                lost = int((steps - np.uint8(1)).sum(dtype=np.int64))
                self._damage.lost_rows[stream] = self._damage.lost_rows.get(stream, 0) + lost
            self._last_counter[stream] = of_stream[-1:]
        known = sum(own.size for own in places)
        if known < headers.size:
            marked = int(np.count_nonzero(_rows.has_marker(headers)))
            self._damage.rows_without_marker += headers.size - marked
            self._damage.unknown_rows += marked - known
