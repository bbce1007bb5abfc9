"""Keeps what the library prints away from the user's terminal: it prints diagnostics by C's standard streams, which
Python itself does not use."""

from __future__ import annotations

import ctypes
import sys
from pathlib import Path
from typing import Optional

_STREAMS = ("stdout", "stderr")


# C's streams into files, which stay open for good: a thread of the library may be about to print into one.
_files: dict[Path, int] = {}


class QuietConsole:
    """Leads C's ``stdout`` and ``stderr`` of this process into a file, from :meth:`close_off` to :meth:`restore`.

    Where C's streams cannot be exchanged, as on Windows, it does nothing.
    """

    def __init__(self, path: Path) -> None:
        self._path = path
        self._before: dict[str, Optional[int]] = {}

    def close_off(self) -> None:
        """Prints go to the file from now on."""
        file = self._open()
        if file is None:
            return
        c = ctypes.CDLL(None)
        for name in _STREAMS:
            stream = ctypes.c_void_p.in_dll(c, name)
            self._before[name] = stream.value
            stream.value = file

    def restore(self) -> None:
        """Prints go where they went before."""
        if not self._before:
            return
        c = ctypes.CDLL(None)
        for name, file in self._before.items():
            ctypes.c_void_p.in_dll(c, name).value = file
        c.fflush(ctypes.c_void_p(_files[self._path]))
        self._before = {}

    def _open(self) -> Optional[int]:
        if not sys.platform.startswith("linux"):
            return None
        if self._path not in _files:
            c = ctypes.CDLL(None)
            c.fopen.restype = ctypes.c_void_p
            c.fopen.argtypes = (ctypes.c_char_p, ctypes.c_char_p)
            file = c.fopen(bytes(self._path), b"a")
            if not file:
                return None
            _files[self._path] = file
        return _files[self._path]
