"""The box, or a raw recording that is played in its place."""

from __future__ import annotations

import atexit
import ctypes
import os
import threading
from pathlib import Path
from typing import Optional, Union

from orbe import _library, _working_directory
from orbe._console import QuietConsole
from orbe._working_directory import inside
from orbe.adc import AdcInputs
from orbe.errors import OrbeError
from orbe.probe import Probe
from orbe.raw_file import RawFile

# The library's devices in the mode that the package opens it in: the ports, and the ADC inputs.
_PROBES_SLOT = 2
_ADC_SLOT = 20
_PORTS = (1, 2, 3, 4)

_lock = threading.Lock()
_opened: Optional[Box] = None


class Box:
    """The open box; made by :func:`open`. A process has one at a time.

    Opening finds the headstages, brings each probe up and gives it the settings of :meth:`orbe.probe.Probe.configure`.
    All streams count samples from the trigger of :meth:`start`.

    Attributes:
        probes: one for each port with a headstage, by ascending port.
        adc: the ADC inputs.
        simulation: the recording that is played; None for the box itself.
    """

    def __init__(self, simulation: Optional[Path] = None, quiet: bool = True) -> None:
        self.simulation = simulation
        self._library = _library.load()
        self._console = QuietConsole(_working_directory.folder() / _working_directory.CONSOLE)
        self.probes: list[Probe] = []
        self._is_open = True
        self._is_running = False
        self._owner = os.getpid()
        _claim(self)
        if quiet:
            self._console.close_off()
        try:
            self._open()
        except BaseException:
            self.close()
            raise

    @property
    def log(self) -> Path:
        """The library's log, until the process ends."""
        return _working_directory.folder() / _working_directory.LOG

    @property
    def is_running(self) -> bool:
        """Whether the streams have been started and not been stopped."""
        return self._is_running

    def probe(self, port: int) -> Probe:
        """The probe of a port (1 to 4).

        Raises:
            OrbeError: there is none.
        """
        for probe in self.probes:
            if probe.port == port:
                return probe
        ports = ", ".join(str(probe.port) for probe in self.probes) or "none"
        raise OrbeError(f"port {port} has no probe; ports with one: {ports}")

    def start(self) -> None:
        """Uploads settings that have changed and starts all streams; a recording is played from its beginning.

        Raises:
            ApiError: a probe does not take its settings, or the box does not start.
        """
        self._check_open()
        if self._is_running:
            return
        for probe in self.probes:
            probe._upload_changes()
            probe._begin_run()
        self.adc._begin_run()
        self._library.call("setSWTrigger", _PROBES_SLOT)
        self._is_running = True
        self._library.call("setSWTrigger", _ADC_SLOT)

    def stop(self) -> None:
        """Stops all streams; what has not been read is gone."""
        self._check_open()
        if self._is_running:
            self._is_running = False
            self._library.call("arm", _ADC_SLOT)
            self._library.call("arm", _PROBES_SLOT)

    def close(self) -> None:
        """Stops and gives the box back. A second call does nothing."""
        if not self._is_open:
            return
        self._is_open = self._is_running = False
        with inside():
            self._library.answer("closeBS", _ADC_SLOT)
            self._library.answer("closeBS", _PROBES_SLOT)
        self._console.restore()
        _release(self)

    def _open(self) -> None:
        with inside():
            _working_directory.write_switches(self.simulation)
            self._library.answer("getDeviceList", None, 0)
            self._library.call("openBS", _PROBES_SLOT)
            self._library.call("openBS", _ADC_SLOT)
            is_simulated = self.simulation is not None
            ports = [port for port in _PORTS if self._has_headstage(port)]
            self.probes = [Probe(self._library, _PROBES_SLOT, port, is_simulated) for port in ports]
            self.adc = AdcInputs(self._library, _ADC_SLOT, is_simulated)

    def _has_headstage(self, port: int) -> bool:
        detected = ctypes.c_bool()
        self._library.call("detectHeadStage", _PROBES_SLOT, port, ctypes.byref(detected))
        return detected.value

    def _check_open(self) -> None:
        if not self._is_open:
            raise OrbeError("the box has been closed")

    def __enter__(self) -> Box:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __repr__(self) -> str:
        what = f"recording '{self.simulation}'" if self.simulation else "box"
        state = "running" if self._is_running else "open" if self._is_open else "closed"
        return f"<{what}, {state}: {len(self.probes)} probes>"


def open(simulation: Union[str, Path, None] = None, *, quiet: bool = True) -> Box:
    """Opens the box, or a raw recording that is played in real time in its place.

    The library finds its files in the working directory. It gets a temporary one of its own: the process goes there
    while this call takes, and back. On Linux what the library prints goes to a file there as long as the box is open.

    Args:
        simulation: the recording; the box itself without it.
        quiet: False leaves the library's prints on the terminal.

    Returns:
        The open box, which is a context manager.

    Raises:
        LibraryError: the library is not there.
        RecordingError: the recording is none.
        ApiError: the box, or one of its probes, cannot be brought up.
        OrbeError: this process has a box open already.
    """
    recording = None
    if simulation is not None:
        recording = Path(simulation).absolute()
        RawFile(recording)  # says what is wrong with it better than an opening that fails
    return Box(recording, quiet)


def _claim(box: Box) -> None:
    global _opened
    with _lock:
        if _opened is not None:
            raise OrbeError("this process has a box open already; close it first")
        _opened = box


def _release(box: Box) -> None:
    global _opened
    with _lock:
        if _opened is box:
            _opened = None


@atexit.register
def _close_at_exit() -> None:
    if _opened is not None and _opened._owner == os.getpid():
        _opened.close()
