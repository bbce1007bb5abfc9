"""Folders in the binary format of the Open Ephys GUI: a folder a stream, and one description of them all."""

from __future__ import annotations

import json
from pathlib import Path
from typing import Any, Optional

import numpy as np

from orbe._folder_stream import FolderStream, map_samples, read_gaps
from orbe._stream_infos import adc_info, ap_info, lfp_info
from orbe.description import Description
from orbe.errors import RecordingError
from orbe.recording import Recording
from orbe.stream import Gap, Stream, StreamInfo
from orbe.units import AP_RATE

_STRUCTURE = "structure.oebin"
_SYNC_LINE = 1


def open_open_ephys(folder: Path, description: Description) -> Recording:
    """The recording in a folder of this format.

    Raises:
        RecordingError: a file is missing, damaged or not finished.
    """
    structure = sorted(folder.glob(f"**/{_STRUCTURE}"))
    if len(structure) != 1:
        what = "is not there" if not structure else f"is there {len(structure)} times"
        raise RecordingError(f"'{folder}' is not whole: {_STRUCTURE} {what}")
    entries = _read_structure(structure[0])
    gaps = read_gaps(folder)
    parts = structure[0].parent
    streams: list[Stream] = []
    for place, probe in enumerate(description.probes):
        name = "Probe" + chr(ord("A") + place)
        events = _events_folder(parts, entries, f"{name}-AP")
        for ending, info in (("AP", ap_info(description, probe)), ("LFP", lfp_info(description, probe))):
            streams.append(_open_stream(parts, entries, f"{name}-{ending}", info, gaps, events))
    if description.adc_inputs:
        events = _events_folder(parts, entries, "ADC")
        info = adc_info(description, description.adc_inputs)
        streams.append(_open_stream(parts, entries, "ADC", info, gaps, events))
    return Recording(folder, description.format, description, streams)


class OpenEphysStream(FolderStream):
    """A stream whose sync input is in a folder of events: where it changes."""

    def __init__(
        self, info: StreamInfo, samples: np.ndarray, gaps: list[Gap], first: int, events: Optional[Path]
    ) -> None:
        super().__init__(info, samples, gaps)
        self._first = first
        self._events = events

    def _sync_levels(self, start: int, stop: int) -> np.ndarray:
        if self._events is None:
            return np.zeros(stop - start, dtype=bool)
        states = _load(self._events / "states.npy")
        numbers = _load(self._events / "sample_numbers.npy")
        of_sync = np.abs(states) == _SYNC_LINE
        levels = np.concatenate(([False], states[of_sync] > 0))
        step = round(AP_RATE / self.rate)
        samples = (self._first + np.arange(start, stop)) * step
        return levels[np.searchsorted(numbers[of_sync], samples, side="right")]


def _open_stream(
    parts: Path,
    entries: dict[str, Any],
    name: str,
    info: StreamInfo,
    gaps: dict[str, list[Gap]],
    events: Optional[Path],
) -> OpenEphysStream:
    columns = len(info.channel_names)
    entry = next((entry for entry in entries["continuous"] if entry["stream_name"] == name), None)
    if entry is None:  # not a sample of it came
        return OpenEphysStream(info, np.empty((0, columns), dtype=np.int16), [], 0, None)
    if entry["num_channels"] != columns:
        raise RecordingError(
            f"'{parts / _STRUCTURE}' says {entry['num_channels']} channels of {name}, and the description of the "
            f"folder {columns}"
        )
    folder = parts / "continuous" / entry["folder_name"]
    samples = map_samples(folder / "continuous.dat", columns)
    numbers = _load(folder / "sample_numbers.npy")
    if len(numbers) != len(samples):
        raise RecordingError(
            f"'{folder}' was not finished: it has {len(samples)} samples and the numbers of {len(numbers)}; "
            "orbe-record repair mends the folder"
        )
    first = int(numbers[0]) if len(numbers) else 0
    return OpenEphysStream(info, samples, gaps.get(folder.name, []), first, events)


def _events_folder(parts: Path, entries: dict[str, Any], name: str) -> Optional[Path]:
    for entry in entries["events"]:
        if entry["stream_name"] == name:
            return parts / "events" / entry["folder_name"]
    return None


def _read_structure(path: Path) -> dict[str, Any]:
    try:
        entries = json.loads(path.read_text(encoding="utf-8"))
        for entry in entries["continuous"]:
            entry["stream_name"], entry["folder_name"], entry["num_channels"]
        for entry in entries["events"]:
            entry["stream_name"], entry["folder_name"]
    except (OSError, ValueError, KeyError, TypeError) as error:
        raise RecordingError(f"'{path}' is damaged: {error!r}") from error
    return entries


def _load(path: Path) -> np.ndarray:
    try:
        return np.load(path, mmap_mode="r", allow_pickle=False)
    except (OSError, ValueError) as error:
        raise RecordingError(
            f"'{path}' is missing or was not finished ({error}); orbe-record repair mends the folder"
        ) from error
