"""Counts, volts and sample numbers of the box's streams."""

from __future__ import annotations

from typing import Union

import numpy as np
import numpy.typing as npt

AP_RATE: float = 30_000.0
"""Samples a second of the AP band and of the ADC inputs."""

LFP_RATE: float = 2_500.0
"""Samples a second of the LFP band."""

AP_SAMPLES_PER_LFP_SAMPLE: int = 12
CHANNEL_COUNT: int = 384
ELECTRODE_COUNT: int = 960

GAINS: tuple[int, ...] = (50, 125, 250, 500, 1000, 1500, 2000, 3000)
"""The gains of both bands, by their code."""

PROBE_RANGE_VOLTS: float = 1.2
"""What the ten bits of a probe's converter span."""

PROBE_LEVELS: int = 1024
ADC_FULL_SCALE: int = 32768

_MICRO = 1e6


def microvolts_per_count(gain: Union[float, npt.ArrayLike]) -> np.ndarray:
    """The µV at the electrode that one count stands for.

    Args:
        gain: amplification of the band, a number or an array of any shape.

    Returns:
        float64 array of the same shape, in µV.

    >>> float(microvolts_per_count(500))
    2.34375
    """
    return _MICRO * PROBE_RANGE_VOLTS / PROBE_LEVELS / np.asarray(gain, dtype=np.float64)


def volts_per_count(range_volts: float) -> float:
    """The V at an ADC input that one count stands for, in the range of ± `range_volts`.

    >>> volts_per_count(5.0) * 32768
    5.0
    """
    return range_volts / ADC_FULL_SCALE


def gain_code(gain: int) -> int:
    """The code of a gain.

    Raises:
        ValueError: the probe does not have that gain.

    >>> gain_code(500)
    3
    """
    try:
        return GAINS.index(gain)
    except ValueError:
        raise ValueError(f"there is no gain of {gain}; there are {', '.join(map(str, GAINS))}") from None
