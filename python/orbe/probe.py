"""A probe of the open box: settings and samples."""

from __future__ import annotations

import ctypes
from pathlib import Path
from typing import Optional, Union

import numpy as np
import numpy.typing as npt

from orbe._library import Library
from orbe._live_stream import LiveStream, _Wait
from orbe.description import DEFAULT_AP_GAIN, DEFAULT_LFP_GAIN
from orbe.errors import OrbeError
from orbe.geometry import REFERENCE_CHANNEL, electrode_positions
from orbe.packets import ELECTRODE_PACKET, ROWS, ProbeBlock, probe_block
from orbe.units import AP_RATE, CHANNEL_COUNT, ELECTRODE_COUNT, gain_code, microvolts_per_count

_DOCK = 1
_SHANK = 0
_DISCONNECTED = 255
REFERENCES = {"external": 0, "tip": 1, "internal": 2}
"""References by name, with the library's number."""

_CALIBRATIONS = (("setADCCalibration", "_ADCCalibration.csv"), ("setGainCalibration", "_gainCalValues.csv"))


class Probe(LiveStream[ProbeBlock]):
    """One of ``box.probes``. What is configured reaches the probe with the box's next start.

    Attributes:
        port: 1 to 4.
        serial_number: of the probe; 900000000 and the port in simulation.
        part_number, headstage_part_number: texts.
        ap_gains, lfp_gains: int, shape (384,).
        electrodes: int, shape (384,): 0 to 959, -1 for a channel that is connected to none.
    """

    def __init__(self, library: Library, slot: int, port: int, is_simulated: bool) -> None:
        self._library = library
        self._slot = slot
        self.port = port
        super().__init__(f"port {port}", AP_RATE / ROWS, is_simulated)
        self._is_dirty = True
        library.call("openPort", slot, port)
        library.call("openProbe", slot, port, _DOCK)
        library.call("init", slot, port, _DOCK)
        number = ctypes.c_uint64()
        library.call("readProbeSN", slot, port, _DOCK, ctypes.byref(number))
        self.serial_number = int(number.value)
        self.part_number = library.text("readProbePN", slot, port, _DOCK)
        self.headstage_part_number = library.text("readHSPN", slot, port)
        self.ap_gains = np.full(CHANNEL_COUNT, DEFAULT_AP_GAIN)
        self.lfp_gains = np.full(CHANNEL_COUNT, DEFAULT_LFP_GAIN)
        self.electrodes = np.full(CHANNEL_COUNT, -1)
        self.configure(
            ap_gain=DEFAULT_AP_GAIN, lfp_gain=DEFAULT_LFP_GAIN, banks=0, reference="external", ap_filter=True
        )

    @property
    def positions(self) -> np.ndarray:
        """Where the channels' electrodes lie: float64, shape (384, 2), x and y in µm; NaN without one."""
        return electrode_positions(self.electrodes, self.part_number)

    def configure(
        self,
        *,
        ap_gain: Union[int, npt.ArrayLike, None] = None,
        lfp_gain: Union[int, npt.ArrayLike, None] = None,
        banks: Union[int, npt.ArrayLike, None] = None,
        reference: Optional[str] = None,
        reference_bank: int = 0,
        ap_filter: Optional[bool] = None,
        calibration: Union[str, Path, None] = None,
    ) -> None:
        """Changes what is given and leaves the rest. At first: gains 500 and 250, bank 0, external, filter on.

        Args:
            ap_gain, lfp_gain: 50, 125, 250, 500, 1000, 1500, 2000 or 3000; a number, or one a channel.
            banks: 0, 1 or 2, or -1 to disconnect; a number, or one a channel. Channels whose bank has no electrode
                for them, and channel 191, which is that of the reference electrodes, are disconnected.
            reference: ``external``, ``tip`` or ``internal``, with the bank of the internal one.
            ap_filter: the high pass of the AP band at 300 Hz.
            calibration: folder with ``<serial number>_ADCCalibration.csv`` and ``<serial number>_gainCalValues.csv``,
                or with a folder ``<serial number>`` with them.

        Raises:
            ValueError: a value that the probe does not have.
            OrbeError: the calibration of this probe is not there.
            ApiError: the library refuses.
        """
        if calibration is not None:
            self._load_calibration(Path(calibration))
            banks = self._banks if banks is None else banks
        if ap_gain is not None or lfp_gain is not None:
            self._set_gains(ap_gain, lfp_gain)
        if banks is not None:
            self._set_banks(banks)
        if reference is not None:
            self._set_reference(reference, reference_bank)
        if ap_filter is not None:
            for channel in range(CHANNEL_COUNT):
                self._call("setAPCornerFrequency", channel, not ap_filter)
        self._is_dirty = True

    def upload(self, check: bool = True) -> None:
        """Brings the settings to the probe, as the box's start does for settings that have changed.

        Raises:
            ApiError: the probe does not take them, or with `check` holds something else afterwards.
        """
        self._call("writeProbeConfiguration", check)
        self._is_dirty = False

    def available(self) -> int:
        waiting, headroom = ctypes.c_int(), ctypes.c_int()
        self._call("getElectrodeDataFifoState", ctypes.byref(waiting), ctypes.byref(headroom))
        return waiting.value

    def packets(self, most: int) -> np.ndarray:
        """The library's packets as they are, those that wait: ELECTRODE_PACKET, shape (up to `most`,).

        What is read here does not come to :meth:`read` and :meth:`blocks`, which take it for lost.
        """
        packets = np.empty(most, dtype=ELECTRODE_PACKET)
        return packets[: self._read_into(packets)]

    def _upload_changes(self) -> None:
        if self._is_dirty:
            self.upload()

    def _take(self, wanted: int, wait: _Wait) -> Optional[ProbeBlock]:
        packets = np.empty(wanted, dtype=ELECTRODE_PACKET)
        count = 0
        has_come = True
        while count < wanted and wait.goes_on(has_come):
            came = self._read_into(packets[count:])
            has_come = came > 0
            count += came
        if count == 0:
            return None
        numbers, lost = self._follow(packets["timestamp"][:count])
        return probe_block(self.port, packets[:count], numbers, lost, *self._scales())

    def _read_into(self, packets: np.ndarray) -> int:
        received = ctypes.c_int()
        self._call("readElectrodeData", packets.ctypes.data, ctypes.byref(received), len(packets))
        return received.value

    def _scales(self) -> tuple[np.ndarray, np.ndarray]:
        ap, lfp = (microvolts_per_count(gains) for gains in (self.ap_gains, self.lfp_gains))
        return ap.astype(np.float32), lfp.astype(np.float32)

    def _call(self, name: str, *arguments: object) -> None:
        self._library.call(name, self._slot, self.port, _DOCK, *arguments)

    def _set_gains(self, ap_gain: Optional[npt.ArrayLike], lfp_gain: Optional[npt.ArrayLike]) -> None:
        ap = self.ap_gains if ap_gain is None else _one_a_channel(ap_gain, "gains")
        lfp = self.lfp_gains if lfp_gain is None else _one_a_channel(lfp_gain, "gains")
        codes = [(gain_code(int(a)), gain_code(int(b))) for a, b in zip(ap, lfp)]
        for channel, (ap_code, lfp_code) in enumerate(codes):
            self._call("setGain", channel, ap_code, lfp_code)
        self.ap_gains, self.lfp_gains = ap, lfp

    def _set_banks(self, banks: npt.ArrayLike) -> None:
        wanted = _one_a_channel(banks, "banks")
        if ((wanted < -1) | (wanted > 2)).any():
            raise ValueError("there are the banks 0, 1 and 2, and -1 to disconnect")
        electrodes = np.where(wanted < 0, -1, wanted * CHANNEL_COUNT + np.arange(CHANNEL_COUNT))
        electrodes[(electrodes >= ELECTRODE_COUNT)] = -1
        electrodes[REFERENCE_CHANNEL] = -1
        for channel, electrode in enumerate(electrodes):
            bank = _DISCONNECTED if electrode < 0 else int(electrode) // CHANNEL_COUNT
            if channel != REFERENCE_CHANNEL:
                self._call("selectElectrode", channel, _SHANK, bank)
        self.electrodes = electrodes

    @property
    def _banks(self) -> np.ndarray:
        return np.where(self.electrodes < 0, -1, self.electrodes // CHANNEL_COUNT)

    def _set_reference(self, reference: str, bank: int) -> None:
        if reference not in REFERENCES:
            raise ValueError(f"there is no reference {reference!r}; there are {', '.join(REFERENCES)}")
        for channel in range(CHANNEL_COUNT):
            self._call("setReference", channel, _SHANK, REFERENCES[reference], bank)

    def _load_calibration(self, folder: Path) -> None:
        for function, ending in _CALIBRATIONS:
            name = f"{self.serial_number}{ending}"
            places = (folder / name, folder / str(self.serial_number) / name)
            path = next((place for place in places if place.is_file()), None)
            if path is None:
                raise OrbeError(f"the calibration of the probe of port {self.port} is not there: '{places[0]}'")
            arguments = (bytes(path.resolve()),)
            if function == "setADCCalibration":
                self._library.call(function, self._slot, self.port, *arguments)
            else:
                self._call(function, *arguments)

    def __repr__(self) -> str:
        return f"<probe {self.serial_number} ({self.part_number}) of port {self.port}>"


def _one_a_channel(values: npt.ArrayLike, what: str) -> np.ndarray:
    array = np.asarray(values, dtype=np.int64)
    if array.shape not in ((), (CHANNEL_COUNT,)):
        raise ValueError(f"{what}: give a number, or {CHANNEL_COUNT} of them, and not {array.shape}")
    return np.broadcast_to(array, (CHANNEL_COUNT,)).copy()
