"""Folders in the format of SpikeGLX: a data file and a file of metadata for each stream."""

from __future__ import annotations

from pathlib import Path

from orbe._folder_stream import FolderStream, map_samples, read_gaps
from orbe._stream_infos import adc_info, ap_info, lfp_info
from orbe.description import Description
from orbe.errors import RecordingError
from orbe.recording import Recording
from orbe.stream import Gap, Stream, StreamInfo

# Behind the ADC inputs lie their comparators, in one word, and the status.
_ADC_FURTHER_COLUMNS = 2


def open_spikeglx(folder: Path, description: Description) -> Recording:
    """The recording in a folder of this format.

    Raises:
        RecordingError: a file is missing, damaged or not finished.
    """
    gaps = read_gaps(folder)
    streams: list[Stream] = []
    for place, probe in enumerate(description.probes):
        for ending, info in (("ap", ap_info(description, probe)), ("lf", lfp_info(description, probe))):
            streams.append(_open_stream(folder, f"imec{place}.{ending}", info, gaps))
    if description.adc_inputs:
        streams.append(_open_stream(folder, "obx0", adc_info(description, description.adc_inputs), gaps))
    return Recording(folder, description.format, description, streams)


def _open_stream(folder: Path, name: str, info: StreamInfo, gaps: dict[str, list[Gap]]) -> FolderStream:
    ending = f".{name}.obx.meta" if info.kind == "adc" else f".{name}.meta"
    found = sorted(folder.glob(f"**/*{ending}"))
    if len(found) != 1:
        what = "is not there" if not found else f"is there {len(found)} times"
        raise RecordingError(f"'{folder}' is not whole: *{ending} {what}")
    metadata = _read_metadata(found[0])
    expected = len(info.channel_names) + (_ADC_FURTHER_COLUMNS if info.kind == "adc" else 1)
    columns = _number(found[0], metadata, "nSavedChans")
    if columns != expected:
        raise RecordingError(f"'{found[0]}' has nSavedChans={columns}, and the description of the folder {expected}")
    samples = map_samples(found[0].with_suffix(".bin"), columns, _number(found[0], metadata, "fileSizeBytes"))
    return FolderStream(info, samples, gaps.get(name, []))


def _read_metadata(path: Path) -> dict[str, str]:
    try:
        lines = path.read_text(encoding="utf-8", errors="replace").splitlines()
    except OSError as error:
        raise RecordingError(f"'{path}' cannot be read: {error.strerror}") from error
    return dict(line.split("=", 1) for line in lines if "=" in line)


def _number(path: Path, metadata: dict[str, str], key: str) -> int:
    try:
        return int(metadata[key])
    except (KeyError, ValueError):
        raise RecordingError(f"'{path}' is damaged: it does not say {key}") from None
