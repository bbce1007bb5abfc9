"""The library's packets as numpy takes them, and blocks of samples made of them."""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np

from orbe.units import AP_RATE, AP_SAMPLES_PER_LFP_SAMPLE, CHANNEL_COUNT

ROWS = AP_SAMPLES_PER_LFP_SAMPLE

ELECTRODE_PACKET = np.dtype(
    [
        ("timestamp", "<u4", (ROWS,)),
        ("ap", "<i2", (ROWS, CHANNEL_COUNT)),
        ("lfp", "<i2", (CHANNEL_COUNT,)),
        ("status", "<u2", (ROWS,)),
    ]
)
"""``electrodePacket`` of the library: 10,056 bytes."""

PACKET_INFO = np.dtype([("timestamp", "<u4"), ("status", "<u2"), ("length", "<u2")])
"""``PacketInfo`` of the library: 8 bytes."""

ADC_COLUMNS = 24
"""Twelve inputs, of which the box has eight, and twelve comparators."""

ADC_INPUTS = 8
_COMPARATORS = slice(12, 20)
_TTL = slice(20, 24)
SYNC = 1 << 6


@dataclass(frozen=True)
class ProbeBlock:
    """Samples of one probe in the order in which they came. n AP samples, n / 12 LFP samples.

    Attributes:
        port: 1 to 4.
        ap: counts, int16, shape (n, 384).
        lfp: counts, int16, shape (n / 12, 384).
        sample_numbers: int64, shape (n,); 30,000 a second from the trigger. Lost samples are missing in them.
        sync: level of the sync input, bool, shape (n,).
        lost: samples that are missing in the block, or between it and the one before.
        ap_scale, lfp_scale: float32, shape (384,): µV a count.
    """

    port: int
    ap: np.ndarray
    lfp: np.ndarray
    sample_numbers: np.ndarray
    sync: np.ndarray
    lost: int
    ap_scale: np.ndarray
    lfp_scale: np.ndarray

    @property
    def ap_uv(self) -> np.ndarray:
        """AP band in µV: float32, shape (n, 384)."""
        return self.ap * self.ap_scale

    @property
    def lfp_uv(self) -> np.ndarray:
        """LFP band in µV: float32, shape (n / 12, 384)."""
        return self.lfp * self.lfp_scale

    @property
    def lfp_sample_numbers(self) -> np.ndarray:
        """AP sample with which each LFP sample begins: int64, shape (n / 12,)."""
        return self.sample_numbers[::ROWS]

    @property
    def seconds(self) -> np.ndarray:
        """Time of each AP sample since the trigger, s: float64, shape (n,)."""
        return self.sample_numbers / AP_RATE

    def __len__(self) -> int:
        return len(self.sample_numbers)


@dataclass(frozen=True)
class AdcBlock:
    """Samples of the ADC inputs in the order in which they came.

    Attributes:
        counts: int16, shape (n, 8).
        comparators: of the inputs, bool, shape (n, 8).
        ttl: TTL inputs 1 to 4, bool, shape (n, 4).
        sample_numbers: int64, shape (n,); 30,000 a second from the trigger.
        sync: level of the sync input, bool, shape (n,).
        lost: samples that are missing in the block, or between it and the one before.
        scale: V a count.
    """

    counts: np.ndarray
    comparators: np.ndarray
    ttl: np.ndarray
    sample_numbers: np.ndarray
    sync: np.ndarray
    lost: int
    scale: float

    @property
    def volts(self) -> np.ndarray:
        """Inputs in V: float32, shape (n, 8)."""
        return self.counts * np.float32(self.scale)

    @property
    def seconds(self) -> np.ndarray:
        """Time of each sample since the trigger, s: float64, shape (n,)."""
        return self.sample_numbers / AP_RATE

    def __len__(self) -> int:
        return len(self.sample_numbers)


def probe_block(
    port: int, packets: np.ndarray, numbers: np.ndarray, lost: int, ap_scale: np.ndarray, lfp_scale: np.ndarray
) -> ProbeBlock:
    """A block of packets (ELECTRODE_PACKET, shape (p,)) whose samples have these numbers, shape (p, 12)."""
    return ProbeBlock(
        port=port,
        ap=packets["ap"].reshape(-1, CHANNEL_COUNT),
        lfp=packets["lfp"].copy(),
        sample_numbers=numbers.ravel(),
        sync=(packets["status"].ravel() & SYNC) != 0,
        lost=lost,
        ap_scale=ap_scale,
        lfp_scale=lfp_scale,
    )


def adc_block(infos: np.ndarray, rows: np.ndarray, numbers: np.ndarray, lost: int, scale: float) -> AdcBlock:
    """A block of packets (PACKET_INFO, shape (n,)) and their rows, int16, shape (n, 24)."""
    return AdcBlock(
        counts=rows[:, :ADC_INPUTS].copy(),
        comparators=rows[:, _COMPARATORS] != 0,
        ttl=rows[:, _TTL] != 0,
        sample_numbers=numbers,
        sync=(infos["status"] & SYNC) != 0,
        lost=lost,
        scale=scale,
    )
