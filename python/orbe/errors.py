"""What the package raises. Everything is an :class:`OrbeError`, so that one ``except`` takes all of it."""

from __future__ import annotations


class OrbeError(Exception):
    """Something of this package went wrong; the text says what."""


class LibraryError(OrbeError):
    """The library (``libNeuropixAPI.so``) is not there or cannot be loaded."""


class ApiError(OrbeError):
    """A call of the library answered something else than success.

    Attributes:
        function: the call's name, without ``np_``.
        code: the number that it answered.
    """

    def __init__(self, function: str, code: int, message: str) -> None:
        super().__init__(f"{function} answers {code}: {message}")
        self.function = function
        self.code = code


class StreamStalled(OrbeError):
    """The box sends nothing, although it should."""


class RecordingError(OrbeError):
    """A file or folder is no recording, or not a whole one; the text names it and says what is wrong."""
