"""The folder in which the library runs. It looks for its switch files, and writes its log, in the process's working
directory; so there is a folder of its own for that, into which the process goes for as long as a call takes."""

from __future__ import annotations

import atexit
import contextlib
import os
import shutil
import tempfile
import threading
from pathlib import Path
from typing import Iterator, Optional

from orbe.errors import OrbeError

LOG = "ORBE.log"
CONSOLE = "console.log"
_HOST_MODE = "ORBE_HOST_MODE"
_SIMULATION = "ORBE_DFGMZ_ADAPTER_SIM"
# A PXI basestation with the four ports and a USB device with the ADC inputs.
_DEVICES = "both"

_lock = threading.RLock()
_folder: Optional[Path] = None


def folder() -> Path:
    """The folder, made when it is asked for first; it is removed when the process ends."""
    global _folder
    with _lock:
        if _folder is None:
            _folder = Path(tempfile.mkdtemp(prefix="orbe-"))
            atexit.register(_remove, _folder, os.getpid())
        return _folder


def _remove(path: Path, owner: int) -> None:
    if os.getpid() == owner:  # and no process that was forked off
        shutil.rmtree(path, ignore_errors=True)


def write_switches(recording: Optional[Path]) -> None:
    """Has the next opening be in host mode, on the box or on a recording.

    Raises:
        OrbeError: the recording's path is one that the switch file cannot name.
    """
    (folder() / _HOST_MODE).write_text(_DEVICES + "\n", encoding="ascii")
    switch = folder() / _SIMULATION
    switch.unlink(missing_ok=True)
    if recording is not None:
        path = os.fsencode(recording.resolve())
        if b"\n" in path or path != path.rstrip():
            raise OrbeError(f"'{recording}' cannot be simulated: the library takes no such path")
        switch.write_bytes(path + b"\n")


@contextlib.contextmanager
def inside() -> Iterator[None]:
    """Goes into the folder and back. The working directory is that of the whole process: meanwhile other threads
    must not use relative paths."""
    with _lock:
        home = os.getcwd()
        os.chdir(folder())
        try:
            yield
        finally:
            os.chdir(home)
