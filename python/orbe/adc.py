"""The ADC inputs of the open box."""

from __future__ import annotations

import ctypes
from typing import Optional

import numpy as np

from orbe._library import Library
from orbe._live_stream import LiveStream, _Wait
from orbe.description import DEFAULT_ADC_RANGE_VOLTS
from orbe.packets import ADC_COLUMNS, ADC_INPUTS, PACKET_INFO, AdcBlock, adc_block
from orbe.units import AP_RATE, volts_per_count

RANGES = (2.5, 5.0, 10.0)
"""Ranges in V, by the library's number."""


class AdcInputs(LiveStream[AdcBlock]):
    """``box.adc``: eight inputs and their comparators at 30 kHz.

    Attributes:
        range_volts: ± so much are the ends of the range.
    """

    def __init__(self, library: Library, slot: int, is_simulated: bool) -> None:
        super().__init__("the ADC inputs", AP_RATE, is_simulated)
        self._library = library
        self._slot = slot
        self.range_volts = DEFAULT_ADC_RANGE_VOLTS

    def configure(
        self,
        *,
        range_volts: Optional[float] = None,
        low_volts: Optional[float] = None,
        high_volts: Optional[float] = None,
    ) -> None:
        """Changes what is given, at once. At first: 5 V, thresholds 0.8 V and 2.0 V.

        Args:
            range_volts: 2.5, 5 or 10. The box does not switch anything: it says what the samples' range is.
            low_volts, high_volts: a comparator becomes 1 above the one and 0 below the other; give both.

        Raises:
            ValueError: there is no such range, or one threshold is missing.
            ApiError: the library refuses.
        """
        if range_volts is not None:
            if range_volts not in RANGES:
                raise ValueError(f"there is no range of {range_volts:g} V; there are 2.5, 5 and 10")
            self._library.call("ADC_setVoltageRange", self._slot, RANGES.index(range_volts))
            self.range_volts = float(range_volts)
        if (low_volts is None) != (high_volts is None):
            raise ValueError("give both thresholds")
        if low_volts is not None and high_volts is not None:
            for channel in range(ADC_INPUTS):
                self._library.call("ADC_setComparatorThreshold", self._slot, channel, low_volts, high_volts)

    def available(self) -> int:
        waiting, headroom = ctypes.c_int(), ctypes.c_int()
        self._library.call(
            "ADC_getPacketFifoStatus", self._slot, ctypes.byref(waiting), ctypes.byref(headroom)
        )
        return waiting.value

    def _take(self, wanted: int, wait: _Wait) -> Optional[AdcBlock]:
        infos = np.empty(wanted, dtype=PACKET_INFO)
        rows = np.empty((wanted, ADC_COLUMNS), dtype=np.int16)
        count = 0
        has_come = True
        while count < wanted and wait.goes_on(has_come):
            came = self._read_into(infos[count:], rows[count:])
            has_come = came > 0
            count += came
        if count == 0:
            return None
        numbers, lost = self._follow(infos["timestamp"][:count])
        return adc_block(infos[:count], rows[:count], numbers, lost, volts_per_count(self.range_volts))

    def _read_into(self, infos: np.ndarray, rows: np.ndarray) -> int:
        received = ctypes.c_int()
        self._library.call(
            "ADC_readPackets",
            self._slot,
            infos.ctypes.data,
            rows.ctypes.data,
            ADC_COLUMNS,
            len(infos),
            ctypes.byref(received),
        )
        return received.value
