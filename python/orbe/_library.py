"""Finds and loads the library, declares the C twins that the package calls, and turns their answers into exceptions."""

from __future__ import annotations

import ctypes
import os
import sys
from pathlib import Path
from typing import Iterator, Optional

from orbe.errors import ApiError, LibraryError

VARIABLE = "ORBE_LIBRARY"
_WINDOWS_NAME = "NeuropixAPI_x64_3_62_1.dll"
_LINUX_NAME = "libNeuropixAPI.so"
_MESSAGE_BYTES = 1024
# A package in lib/python3/dist-packages/orbe lies four folders below its prefix.
_LEVELS_TO_PREFIX = 5

_int = ctypes.c_int
_int_p = ctypes.POINTER(_int)
_bool_p = ctypes.POINTER(ctypes.c_bool)
_u64_p = ctypes.POINTER(ctypes.c_uint64)
_bytes = ctypes.c_char_p
_size = ctypes.c_size_t
_any_p = ctypes.c_void_p

_PARAMETERS: dict[str, tuple[type, ...]] = {
    "getDeviceList": (_any_p, _int),
    "getLastErrorMessage": (_bytes, _size),
    "openBS": (_int,),
    "closeBS": (_int,),
    "arm": (_int,),
    "setSWTrigger": (_int,),
    "detectHeadStage": (_int, _int, _bool_p),
    "openPort": (_int, _int),
    "openProbe": (_int, _int, _int),
    "init": (_int, _int, _int),
    "readHSPN": (_int, _int, _bytes, _size),
    "readProbePN": (_int, _int, _int, _bytes, _size),
    "readProbeSN": (_int, _int, _int, _u64_p),
    "selectElectrode": (_int, _int, _int, _int, _int, _int),
    "setGain": (_int, _int, _int, _int, _int, _int),
    "setReference": (_int, _int, _int, _int, _int, _int, _int),
    "setAPCornerFrequency": (_int, _int, _int, _int, ctypes.c_bool),
    "setADCCalibration": (_int, _int, _bytes),
    "setGainCalibration": (_int, _int, _int, _bytes),
    "writeProbeConfiguration": (_int, _int, _int, ctypes.c_bool),
    "readElectrodeData": (_int, _int, _int, _any_p, _int_p, _int),
    "getElectrodeDataFifoState": (_int, _int, _int, _int_p, _int_p),
    "ADC_readPackets": (_int, _any_p, _any_p, _int, _int, _int_p),
    "ADC_getPacketFifoStatus": (_int, _int_p, _int_p),
    "ADC_setVoltageRange": (_int, _int),
    "ADC_setComparatorThreshold": (_int, _int, ctypes.c_double, ctypes.c_double),
}


class Library:
    """The loaded library. Any thread may call; while a call waits other Python threads run."""

    def __init__(self, path: str) -> None:
        try:
            self._library = ctypes.CDLL(path)
        except OSError as error:
            raise LibraryError(f"the library cannot be loaded: {error}") from error
        self.path = path
        for name, parameters in _PARAMETERS.items():
            try:
                function = getattr(self._library, "np_" + name)
            except AttributeError:
                raise LibraryError(f"'{path}' is not this library: it has no function np_{name}") from None
            function.argtypes = parameters
            function.restype = _size if name == "getLastErrorMessage" else _int

    def answer(self, name: str, *arguments: object) -> int:
        """What the C twin of a function answers."""
        return int(getattr(self._library, "np_" + name)(*arguments))

    def call(self, name: str, *arguments: object) -> None:
        """Calls a function that must succeed.

        Raises:
            ApiError: it answers something else, with the library's own message.
        """
        code = self.answer(name, *arguments)
        if code != 0:
            raise ApiError(name, code, self.last_error())

    def last_error(self) -> str:
        """The library's message about the last failure on this thread."""
        text = ctypes.create_string_buffer(_MESSAGE_BYTES)
        self.answer("getLastErrorMessage", text, len(text))
        return text.value.decode(errors="replace") or "the library does not say why"

    def text(self, name: str, *arguments: object) -> str:
        """A text that a function writes into a buffer behind these arguments."""
        text = ctypes.create_string_buffer(64)
        self.call(name, *arguments, text, len(text))
        return text.value.decode(errors="replace")


_loaded: Optional[Library] = None


def load() -> Library:
    """The library, which is loaded once a process.

    Raises:
        LibraryError: there is none, or what is there is something else.
    """
    global _loaded
    if _loaded is None:
        _loaded = Library(find())
    return _loaded


def find() -> str:
    """Where the library is: what ``ORBE_LIBRARY`` names, else beside the package and in the folders of its prefix,
    else its name, which the system's loader knows.

    Raises:
        LibraryError: ``ORBE_LIBRARY`` names no file.
    """
    named = os.environ.get(VARIABLE)
    if named:
        if not Path(named).is_file():
            raise LibraryError(f"{VARIABLE} names '{named}', which is no file")
        return str(Path(named).resolve())
    name = _WINDOWS_NAME if sys.platform == "win32" else _LINUX_NAME
    for folder in _folders_around(Path(__file__).resolve().parent):
        if (folder / name).is_file():
            return str(folder / name)
    return name


def _folders_around(package: Path) -> Iterator[Path]:
    yield package
    for prefix in list(package.parents)[:_LEVELS_TO_PREFIX]:
        yield prefix / "bin"
        yield prefix / "lib"
        yield prefix / "lib64"
        yield from sorted((prefix / "lib").glob("*-linux-gnu"))
