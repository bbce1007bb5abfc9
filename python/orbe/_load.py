"""Opens what was recorded, whatever its format."""

from __future__ import annotations

from pathlib import Path
from typing import Union

from orbe._open_ephys import open_open_ephys
from orbe._spikeglx import open_spikeglx
from orbe.description import FILE_NAME, read_description
from orbe.errors import RecordingError
from orbe.raw_file import RawFile
from orbe.recording import Recording

RAW_DATA = "raw_data.bin"
_FOLDERS = {"spikeglx": open_spikeglx, "open-ephys": open_open_ephys}


def load(path: Union[str, Path]) -> Recording:
    """Opens a recording by memory map.

    Args:
        path: a raw file, or a folder of any format that ``orbe-record`` or ``orbe-recording export`` has written.

    Returns:
        Its streams, gaps and description.

    Raises:
        RecordingError: it is no recording, or a damaged one; the text says which file and what is wrong.
    """
    path = Path(path)
    if not path.exists():
        raise RecordingError(f"'{path}' is not there")
    if not path.is_dir():
        return RawFile(path)
    description = read_description(path)
    if description is None:
        raise RecordingError(f"'{path}' is no recording: there is no {FILE_NAME} in it")
    if description.format == "raw":
        return RawFile(path / RAW_DATA, description)
    if description.format not in _FOLDERS:
        raise RecordingError(f"'{path / FILE_NAME}' names a format that is not known: {description.format!r}")
    return _FOLDERS[description.format](path, description)
