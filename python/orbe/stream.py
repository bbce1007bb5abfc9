"""One recorded stream: samples of some channels at one rate, whatever file they lie in."""

from __future__ import annotations

from abc import ABC, abstractmethod
from dataclasses import dataclass, field
from typing import NamedTuple, Optional, Sequence, Union

import numpy as np

from orbe.errors import RecordingError

Channels = Union[slice, Sequence[int], np.ndarray, int, None]


class Gap(NamedTuple):
    """Lost samples: so many (`length`) from sample `sample` of the stream on."""

    sample: int
    length: int


@dataclass(frozen=True)
class StreamInfo:
    """What is known of a stream besides its samples.

    Attributes:
        name: unique in the recording: ``probe1.ap``, ``probe1.lfp``, ``adc``; the number is that of the port.
        kind: ``ap``, ``lfp`` or ``adc``.
        port: of the probe, 1 to 4; None for the ADC inputs.
        rate: samples a second.
        unit: ``µV`` or ``V``.
        scale: float64, shape (channels,): `unit` a count.
        channel_names: one a channel.
        gains: float64, shape (channels,): amplification of the band; None for the ADC inputs.
        electrodes: int, shape (channels,), -1 for none; None for the ADC inputs.
        positions: float64, shape (channels, 2): x and y in µm, NaN where unknown; None for the ADC inputs.
        start_seconds: time of sample 0 since the recording's time 0.
    """

    name: str
    kind: str
    port: Optional[int]
    rate: float
    unit: str
    scale: np.ndarray
    channel_names: tuple[str, ...]
    gains: Optional[np.ndarray] = None
    electrodes: Optional[np.ndarray] = None
    positions: Optional[np.ndarray] = field(default=None)
    start_seconds: float = 0.0


class Stream(ABC):
    """Reads spans of a stream. Samples count from 0; sample n is at ``info.start_seconds + n / info.rate``.

    ``stream[10:20]``, ``stream[10:20, 3]`` and ``stream[10:20, [1, 5]]`` answer what :meth:`read` does.
    """

    def __init__(self, info: StreamInfo) -> None:
        self.info = info

    @property
    def name(self) -> str:
        return self.info.name

    @property
    def rate(self) -> float:
        """Samples a second."""
        return self.info.rate

    @property
    def unit(self) -> str:
        """``µV`` or ``V``."""
        return self.info.unit

    @property
    def channel_count(self) -> int:
        return len(self.info.channel_names)

    @property
    def duration(self) -> float:
        """Seconds, gaps included."""
        return len(self) / self.rate

    @property
    def lost_samples(self) -> int:
        """Samples in all gaps together."""
        return sum(gap.length for gap in self.gaps)

    @property
    @abstractmethod
    def gaps(self) -> list[Gap]:
        """Where samples were lost, in their order. Counts in them read 0."""

    @abstractmethod
    def __len__(self) -> int:
        """Samples from the first to the last one, those in gaps included."""

    @abstractmethod
    def _counts(self, start: int, stop: int) -> np.ndarray:
        """Counts of all channels, int16, shape (stop - start, channels), for a span inside the stream."""

    def counts(self, start: int = 0, stop: Optional[int] = None, channels: Channels = None) -> np.ndarray:
        """Counts as they were recorded.

        Args:
            start, stop: samples; the span is cut to the stream, and negative numbers count from its end.
            channels: a number, a slice or a list; all without it.

        Returns:
            int16 array of shape (samples, channels); (samples,) for a single channel.
        """
        first, last, _ = slice(start, stop).indices(len(self))
        counts = self._counts(first, max(first, last))
        return counts if channels is None else counts[:, channels]

    def read(self, start: int = 0, stop: Optional[int] = None, channels: Channels = None) -> np.ndarray:
        """As :meth:`counts`, but float32 in :attr:`unit`."""
        selected = slice(None) if channels is None else channels
        return self.counts(start, stop, channels) * self.info.scale[selected].astype(np.float32)

    def sync(self, start: int = 0, stop: Optional[int] = None) -> np.ndarray:
        """Level of the sync input at samples: bool, shape (samples,), False where they are lost.

        Raises:
            RecordingError: the recording does not hold it.
        """
        first, last, _ = slice(start, stop).indices(len(self))
        return self._sync_levels(first, max(first, last))

    def _sync_levels(self, start: int, stop: int) -> np.ndarray:
        raise RecordingError(f"the recording does not hold the sync input's level at the samples of {self.name}")

    def seconds(self, start: int = 0, stop: Optional[int] = None) -> np.ndarray:
        """Times of samples: float64 array of shape (samples,), s since the recording's time 0."""
        first, last, _ = slice(start, stop).indices(len(self))
        return self.info.start_seconds + np.arange(first, max(first, last)) / self.rate

    def __getitem__(self, key: Union[slice, tuple[slice, Channels]]) -> np.ndarray:
        span, channels = key if isinstance(key, tuple) else (key, None)
        if not isinstance(span, slice) or span.step not in (None, 1):
            raise TypeError("a stream is read by spans of samples without a step, as in stream[0:30000, 5]")
        return self.read(span.start or 0, span.stop, channels)

    def __repr__(self) -> str:
        return (
            f"<{self.name}: {len(self)} samples of {self.channel_count} channels at {self.rate:g} Hz, "
            f"{self.duration:.3f} s in {self.unit}>"
        )
