"""Neuropixels probes on the ORBE acquisition box.

* :func:`open` opens the box, or plays a raw recording in its place: settings, start, blocks of samples as they come.
* :func:`load` opens what was recorded, a folder or a raw file, by memory map: spans in µV, gaps, gains, positions.
* :mod:`orbe.plot` draws traces, spectra, RMS along the probe and an overview page (it takes matplotlib).

Errors are :class:`OrbeError`. Samples are 30,000 a second in the AP band and of the ADC inputs, 2,500 in the LFP band,
and numbered from the trigger.
"""

from orbe._version import __version__
from orbe.adc import AdcInputs
from orbe.box import Box, open
from orbe.description import Description, ProbeDescription
from orbe.errors import ApiError, LibraryError, OrbeError, RecordingError, StreamStalled
from orbe._load import load
from orbe.packets import AdcBlock, ProbeBlock
from orbe.probe import Probe
from orbe.raw_file import RawFile
from orbe.recording import Recording
from orbe.stream import Gap, Stream, StreamInfo

__all__ = [
    "AdcBlock",
    "AdcInputs",
    "ApiError",
    "Box",
    "Description",
    "Gap",
    "LibraryError",
    "OrbeError",
    "Probe",
    "ProbeBlock",
    "ProbeDescription",
    "RawFile",
    "Recording",
    "RecordingError",
    "Stream",
    "StreamInfo",
    "StreamStalled",
    "__version__",
    "load",
    "open",
]
