"""The version, which is that of the library that the package belongs to."""

__version__ = "3.62.1"
