"""Stamps of 100 kHz to sample numbers of 30 kHz: what a stream's packets bear."""

from __future__ import annotations

import numpy as np

_WRAP = 1 << 32


def sample_numbers_of(stamps: np.ndarray) -> np.ndarray:
    """The samples that bear these stamps, which are unwrapped: ``ceil(stamp * 3 / 10)``.

    >>> sample_numbers_of(np.array([0, 3, 6, 10, 13]))
    array([0, 1, 2, 3, 4])
    """
    return (np.asarray(stamps, dtype=np.int64) * 3 + 9) // 10


class StampCounter:
    """Follows the stamps of one stream over their wraps, which come every 11.9 hours."""

    def __init__(self) -> None:
        self._last = 0  # without its wraps

    def follow(self, stamps: np.ndarray) -> np.ndarray:
        """Sample numbers (int64, shape of `stamps`) of the next stamps of the stream, in their order."""
        flat = np.asarray(stamps, dtype=np.int64).ravel()
        if flat.size == 0:
            return np.empty(np.shape(stamps), dtype=np.int64)
        steps = np.diff(flat, prepend=self._last % _WRAP) % _WRAP
        unwrapped = self._last + np.cumsum(steps)
        self._last = int(unwrapped[-1])
        return sample_numbers_of(unwrapped).reshape(np.shape(stamps))
