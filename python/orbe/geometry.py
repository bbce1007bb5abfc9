"""Where the electrodes of a probe lie."""

from __future__ import annotations

import numpy as np
import numpy.typing as npt

from orbe.units import CHANNEL_COUNT, ELECTRODE_COUNT

_ROW_PITCH_UM = 20.0
# Two electrodes a row, of even and of odd rows: nearly all probes of this kind have staggered rows, the short ones for
# large animals straight columns at the edges of a wide shank.
_STAGGERED_X_UM = np.array([[27.0, 59.0], [11.0, 43.0]])
_STRAIGHT_X_UM = np.array([[11.0, 114.0], [11.0, 114.0]])
_STRAIGHT_PARTS = ("NP1015", "NP1016")

REFERENCE_CHANNEL = 191
"""The channel of the reference electrodes, which is connected to none after a probe's bring-up."""


def electrode_positions(electrodes: npt.ArrayLike, part_number: str = "") -> np.ndarray:
    """Positions of electrodes on the shank.

    Args:
        electrodes: numbers 0 to 959, shape (n,); a number outside, such as -1 for none, has no position.
        part_number: of the probe.

    Returns:
        float64 array of shape (n, 2): x from the left edge of the shank and y along it, from the row nearest to the
        tip, in µm; NaN where there is no position.

    >>> electrode_positions([0, 1, 2, -1])
    array([[27.,  0.],
           [59.,  0.],
           [11., 20.],
           [nan, nan]])
    """
    numbers = np.asarray(electrodes, dtype=np.int64)
    rows = numbers // 2
    x_um = _STRAIGHT_X_UM if part_number in _STRAIGHT_PARTS else _STAGGERED_X_UM
    positions = np.column_stack((x_um[rows % 2, numbers % 2], rows * _ROW_PITCH_UM))
    positions[(numbers < 0) | (numbers >= ELECTRODE_COUNT)] = np.nan
    return positions


def bank_electrodes(bank: int) -> np.ndarray:
    """The electrodes of the 384 channels when all are in one bank (0 to 2); -1 for a channel that has none.

    Channel 191 is that of the reference electrodes and has none.

    >>> bank_electrodes(1)[:3]
    array([384, 385, 386])
    """
    electrodes = bank * CHANNEL_COUNT + np.arange(CHANNEL_COUNT)
    electrodes[electrodes >= ELECTRODE_COUNT] = -1
    electrodes[REFERENCE_CHANNEL] = -1
    return electrodes
