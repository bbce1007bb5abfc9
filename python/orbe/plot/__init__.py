"""Pictures of recorded streams. It takes matplotlib, which nothing else of the package does.

:func:`traces`, :func:`spectrum` and :func:`rms` draw into axes that they are given, or into a new figure of their own;
:func:`overview` makes a page of a whole recording. Nothing here opens a window: save the figure of the axes.
"""

from orbe.plot._axes import RMS_SECONDS, SPECTRUM_SECONDS
from orbe.plot.overview import overview, save_overview
from orbe.plot.rms import rms
from orbe.plot.spectrum import spectral_density, spectrum
from orbe.plot.traces import traces

__all__ = [
    "RMS_SECONDS",
    "SPECTRUM_SECONDS",
    "overview",
    "rms",
    "save_overview",
    "spectral_density",
    "spectrum",
    "traces",
]
