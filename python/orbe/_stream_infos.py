"""What is known of the streams of a recording from its description."""

from __future__ import annotations

import numpy as np

from orbe.description import Description, ProbeDescription
from orbe.geometry import electrode_positions
from orbe.stream import StreamInfo
from orbe.units import AP_RATE, LFP_RATE, microvolts_per_count, volts_per_count


def ap_info(description: Description, probe: ProbeDescription) -> StreamInfo:
    """The AP band of a probe, of the channels that are saved."""
    return _probe_info(description, probe, "ap", "AP", AP_RATE, probe.ap_gains)


def lfp_info(description: Description, probe: ProbeDescription) -> StreamInfo:
    """The LFP band of a probe, of the channels that are saved."""
    return _probe_info(description, probe, "lfp", "LF", LFP_RATE, probe.lfp_gains)


def adc_info(description: Description, inputs: int) -> StreamInfo:
    """The ADC inputs."""
    return StreamInfo(
        name="adc",
        kind="adc",
        port=None,
        rate=AP_RATE,
        unit="V",
        scale=np.full(inputs, volts_per_count(description.adc_range_volts)),
        channel_names=tuple(f"ADC{channel}" for channel in range(inputs)),
        start_seconds=description.first_sample / AP_RATE,
    )


def _probe_info(
    description: Description, probe: ProbeDescription, kind: str, prefix: str, rate: float, gains: np.ndarray
) -> StreamInfo:
    saved = description.saved_channels
    electrodes = probe.electrodes[saved]
    return StreamInfo(
        name=f"probe{probe.port}.{kind}",
        kind=kind,
        port=probe.port,
        rate=rate,
        unit="µV",
        scale=microvolts_per_count(gains[saved]),
        channel_names=tuple(f"{prefix}{channel}" for channel in saved),
        gains=gains[saved],
        electrodes=electrodes,
        positions=electrode_positions(electrodes, probe.part_number),
        start_seconds=description.first_sample / AP_RATE,
    )
