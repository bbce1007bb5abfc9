"""A recording: its streams by name, whatever format it has."""

from __future__ import annotations

from datetime import datetime
from pathlib import Path
from typing import Iterable, Iterator, Optional

from orbe.description import Description
from orbe.stream import Stream


class Recording:
    """Streams of one recording, which share one clock.

    Use it as a context manager, or let it go: files are mapped into memory and no other resource is held.

    Attributes:
        path: file or folder.
        format: ``raw``, ``spikeglx`` or ``open-ephys``.
        description: probes, gains, electrodes, start time.
        streams: by name: ``probe1.ap``, ``probe1.lfp``, ``adc``; the number is that of the port.
    """

    def __init__(self, path: Path, format: str, description: Description, streams: Iterable[Stream]) -> None:
        self.path = Path(path)
        self.format = format
        self.description = description
        self.streams: dict[str, Stream] = {stream.name: stream for stream in streams}

    @property
    def start_time(self) -> Optional[datetime]:
        """When the trigger came, in UTC: the recording's time 0. None where it is not known."""
        return self.description.start_time

    @property
    def ports(self) -> tuple[int, ...]:
        """Ports with a probe, ascending."""
        return tuple(sorted({stream.info.port for stream in self if stream.info.port is not None}))

    @property
    def duration(self) -> float:
        """Seconds of the longest stream, gaps included."""
        return max((stream.duration for stream in self), default=0.0)

    @property
    def lost_samples(self) -> int:
        """Samples in all gaps of the AP bands and the ADC inputs together."""
        return sum(stream.lost_samples for stream in self if stream.info.kind != "lfp")

    @property
    def is_described(self) -> bool:
        """Whether gains and electrodes are known; otherwise they are assumed."""
        return True

    def __getitem__(self, name: str) -> Stream:
        try:
            return self.streams[name]
        except KeyError:
            raise KeyError(f"'{self.path}' has no stream {name!r}; it has {', '.join(self.streams)}") from None

    def __iter__(self) -> Iterator[Stream]:
        return iter(self.streams.values())

    def __contains__(self, name: object) -> bool:
        return name in self.streams

    def __enter__(self) -> Recording:
        return self

    def __exit__(self, *_: object) -> None:
        pass

    def __repr__(self) -> str:
        return f"<{self.format} recording '{self.path}': {', '.join(self.streams)}>"
