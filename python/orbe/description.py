"""What a recording is of: ``orbe_recording.json``, which lies in every recorded folder, whatever its format."""

from __future__ import annotations

import json
from dataclasses import dataclass
from datetime import datetime, timezone
from pathlib import Path
from typing import Any, Optional, Sequence

import numpy as np

from orbe.errors import RecordingError
from orbe.geometry import bank_electrodes
from orbe.units import CHANNEL_COUNT, ELECTRODE_COUNT

FILE_NAME = "orbe_recording.json"
DEFAULT_AP_GAIN = 500
DEFAULT_LFP_GAIN = 250
DEFAULT_ADC_RANGE_VOLTS = 5.0
_ADC_INPUTS = 12


@dataclass(frozen=True)
class ProbeDescription:
    """A probe and its settings. The arrays have the shape (384,), one entry a channel.

    Attributes:
        port: 1 to 4.
        serial_number: 0 where it is not known.
        electrodes: int, 0 to 959, -1 for a channel that is connected to none.
        ap_gains, lfp_gains: float.
        references: int; 0 external, 1 tip, 2 to 4 the internal one of bank 0 to 2.
        is_standby: bool.
        ap_filter: whether the high pass at 300 Hz is on.
        is_calibrated: whether the samples are corrected by the probe's calibration.
    """

    port: int
    serial_number: int
    part_number: str
    headstage_part_number: str
    electrodes: np.ndarray
    ap_gains: np.ndarray
    lfp_gains: np.ndarray
    references: np.ndarray
    is_standby: np.ndarray
    ap_filter: bool
    is_calibrated: bool

    @staticmethod
    def of_unknown(port: int) -> ProbeDescription:
        """As the box leaves a probe that nobody has told anything."""
        return ProbeDescription(
            port=port,
            serial_number=0,
            part_number="",
            headstage_part_number="",
            electrodes=bank_electrodes(0),
            ap_gains=np.full(CHANNEL_COUNT, float(DEFAULT_AP_GAIN)),
            lfp_gains=np.full(CHANNEL_COUNT, float(DEFAULT_LFP_GAIN)),
            references=np.zeros(CHANNEL_COUNT, dtype=np.int64),
            is_standby=np.zeros(CHANNEL_COUNT, dtype=bool),
            ap_filter=True,
            is_calibrated=False,
        )


@dataclass(frozen=True)
class Description:
    """A recording as a whole.

    Attributes:
        format: ``spikeglx``, ``open-ephys`` or ``raw``.
        start_time: of the trigger, in UTC; None where it is not known.
        source: ``box``, or the name of the raw recording.
        first_sample: AP samples from the trigger to the first one of the files.
        saved_channels: of every probe, int, ascending.
        adc_range_volts: ± so much are the ends of the ADC inputs' range.
        adc_inputs: how many there are; 0 where they were not recorded.
    """

    format: str
    start_time: Optional[datetime]
    source: str
    program_version: str
    first_sample: int
    saved_channels: np.ndarray
    probes: tuple[ProbeDescription, ...]
    adc_range_volts: float
    adc_inputs: int

    @staticmethod
    def of_unknown(ports: Sequence[int]) -> Description:
        """Of a raw recording that comes without a description: the box's own settings."""
        return Description(
            format="raw",
            start_time=None,
            source="",
            program_version="",
            first_sample=0,
            saved_channels=np.arange(CHANNEL_COUNT),
            probes=tuple(ProbeDescription.of_unknown(port) for port in ports),
            adc_range_volts=DEFAULT_ADC_RANGE_VOLTS,
            adc_inputs=_ADC_INPUTS,
        )

    def probe(self, port: int) -> ProbeDescription:
        """The probe of a port (1 to 4); as the box leaves one where none is described."""
        for probe in self.probes:
            if probe.port == port:
                return probe
        return ProbeDescription.of_unknown(port)


def read_description(folder: Path) -> Optional[Description]:
    """The description in a folder, None where there is none.

    Raises:
        RecordingError: it cannot be read, or is damaged.
    """
    path = folder / FILE_NAME
    try:
        text = path.read_text(encoding="utf-8")
    except FileNotFoundError:
        return None
    except (OSError, UnicodeDecodeError) as error:
        raise RecordingError(f"'{path}' cannot be read: {error}") from error
    try:
        return _description_of(json.loads(text))
    except (ValueError, KeyError, TypeError, AttributeError) as error:
        what = f"there is no {error}" if isinstance(error, KeyError) else str(error)
        raise RecordingError(f"'{path}' is damaged: {what}") from error


def _description_of(entries: dict[str, Any]) -> Description:
    adc = entries.get("adc")
    saved = np.array(entries["saved_channels"], dtype=np.int64)
    if saved.ndim != 1 or (np.diff(saved) <= 0).any() or ((saved < 0) | (saved >= CHANNEL_COUNT)).any():
        raise ValueError(f"the saved channels are not ascending numbers below {CHANNEL_COUNT}")
    return Description(
        format=str(entries["format"]),
        start_time=_time_of(entries["start_time"]),
        source=str(entries["source"]),
        program_version=str(entries["program_version"]),
        first_sample=int(entries["first_sample"]),
        saved_channels=saved,
        probes=tuple(_probe_of(probe) for probe in entries["probes"]),
        adc_range_volts=float(adc["range_volts"]) if adc else DEFAULT_ADC_RANGE_VOLTS,
        adc_inputs=int(adc["input_count"]) if adc else 0,
    )


def _time_of(text: str) -> datetime:
    return datetime.strptime(text, "%Y-%m-%dT%H:%M:%S.%fZ").replace(tzinfo=timezone.utc)


def _probe_of(entries: dict[str, Any]) -> ProbeDescription:
    port = int(entries["port"])
    if not 1 <= port <= 4:
        raise ValueError(f"there is no port {port}")
    electrodes = _by_channel(entries, "electrodes", np.int64)
    if ((electrodes < -1) | (electrodes >= ELECTRODE_COUNT)).any():
        raise ValueError(f"the electrodes are not numbers from -1 to {ELECTRODE_COUNT - 1}")
    gains = [_by_channel(entries, name, np.float64) for name in ("ap_gains", "lfp_gains")]
    if min(gain.min() for gain in gains) <= 0:
        raise ValueError("a gain is not above 0")
    return ProbeDescription(
        port=port,
        serial_number=int(entries["serial_number"]),
        part_number=str(entries["part_number"]),
        headstage_part_number=str(entries["headstage_part_number"]),
        electrodes=electrodes,
        ap_gains=gains[0],
        lfp_gains=gains[1],
        references=_by_channel(entries, "references", np.int64),
        is_standby=_by_channel(entries, "is_standby", np.bool_),
        ap_filter=bool(entries["ap_filter"]),
        is_calibrated=bool(entries["is_calibrated"]),
    )


def _by_channel(entries: dict[str, Any], name: str, kind: type) -> np.ndarray:
    values: np.ndarray = np.array(entries[name], dtype=kind)
    if values.shape != (CHANNEL_COUNT,):
        raise ValueError(f"{name} has {values.size} entries and not {CHANNEL_COUNT}")
    return values
