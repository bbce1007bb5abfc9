"""Keeps what the library prints away from the user's terminal: it prints diagnostics by C's standard streams, which
Python itself does not use."""

from __future__ import annotations

import ctypes
import sys
from pathlib import Path
from typing import Optional

_STREAMS = ("stdout", "stderr")


class QuietConsole:
    """Leads C's ``stdout`` and ``stderr`` of this process into a file, from :meth:`close_off` to :meth:`restore`.

    Where C's streams cannot be exchanged, as on Windows, it does nothing.
    """

    def __init__(self, path: Path) -> None:
        self._path = path
        self._c: Optional[ctypes.CDLL] = None
        self._file: Optional[int] = None
        self._before: dict[str, Optional[int]] = {}

    def close_off(self) -> None:
        """Prints go to the file from now on."""
        if not sys.platform.startswith("linux"):
            return
        c = ctypes.CDLL(None)
        c.fopen.restype = ctypes.c_void_p
        c.fopen.argtypes = (ctypes.c_char_p, ctypes.c_char_p)
        file = c.fopen(bytes(self._path), b"a")
        if not file:
            return
        self._c, self._file = c, file
        for name in _STREAMS:
            stream = ctypes.c_void_p.in_dll(c, name)
            self._before[name] = stream.value
            stream.value = file

    def restore(self) -> None:
        """Prints go where they went before."""
        if self._c is None:
            return
        for name, file in self._before.items():
            ctypes.c_void_p.in_dll(self._c, name).value = file
        # The file stays open: a thread of the library may be about to print into it.
        self._c.fflush(ctypes.c_void_p(self._file))
        self._c = None
