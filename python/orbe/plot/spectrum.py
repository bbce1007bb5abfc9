"""Spectra: how much of a signal lies at which frequency."""

from __future__ import annotations

from typing import TYPE_CHECKING, Optional

import numpy as np

from orbe.plot._axes import (
    COLORS,
    SPECTRUM_SECONDS,
    connected_channels,
    make_axes,
    say_nothing_to_draw,
    span_without_gaps,
    tidy,
    title_of,
)
from orbe.stream import Stream

if TYPE_CHECKING:
    from matplotlib.axes import Axes

_WINDOW = 4096
_LEAST_WINDOW = 64
_LEAST_WINDOWS = 4
_QUARTILES = (25.0, 50.0, 75.0)


def spectral_density(values: np.ndarray, rate: float, window: int = _WINDOW) -> tuple[np.ndarray, np.ndarray]:
    """Amplitude spectral density, averaged over windows (Hann) that overlap by half.

    Args:
        values: shape (samples, channels), in any unit.
        rate: samples a second.
        window: samples of a window, cut to those that there are.

    Returns:
        Frequencies in Hz, shape (window / 2 + 1,), and the unit / √Hz of each channel, shape (window / 2 + 1,
        channels); float64. A sine of the amplitude A brings A² / 2 into the integral of the square.

    Raises:
        ValueError: fewer than 64 samples.

    >>> time = np.arange(30000) / 30000
    >>> frequencies, density = spectral_density(np.sin(2 * np.pi * 3000 * time)[:, np.newaxis], 30000)
    >>> float(frequencies[density[:, 0].argmax()])
    3002.9296875
    >>> round(float((density[:, 0] ** 2).sum() * frequencies[1]), 3)
    0.5
    """
    window = min(window, len(values))
    if window < _LEAST_WINDOW:
        raise ValueError(f"a spectrum takes {_LEAST_WINDOW} samples at least, and not {window}")
    weights = np.hanning(window + 1)[:-1]
    power = np.zeros((window // 2 + 1, values.shape[1]))
    starts = range(0, len(values) - window + 1, window // 2)
    for start in starts:
        part = values[start : start + window].astype(np.float64)
        part -= part.mean(axis=0)
        power += np.abs(np.fft.rfft(part * weights[:, np.newaxis], axis=0)) ** 2
    power *= 2.0 / (rate * (weights**2).sum() * len(starts))
    power[0] /= 2
    if window % 2 == 0:
        power[-1] /= 2
    return np.fft.rfftfreq(window, 1.0 / rate), np.sqrt(power)


def spectrum(
    stream: Stream,
    start: float = 0.0,
    seconds: float = SPECTRUM_SECONDS,
    axes: Optional[Axes] = None,
) -> Axes:
    """Draws the amplitude spectral density of a stream: the median of its channels and the quartiles around it.

    Args:
        stream: any; of a probe, the channels with an electrode.
        start, seconds: what it is made of, s since sample 0; of it the longest part without a gap.
        axes: to draw into; those of a new figure without it.

    Returns:
        The axes, both logarithmic.
    """
    axes = make_axes(axes)
    tidy(axes, title_of(stream, "spectrum"), "frequency (Hz)", f"density ({stream.unit}/√Hz)")
    span = span_without_gaps(stream, start, seconds)
    channels = connected_channels(stream)
    if span.stop - span.start < _LEAST_WINDOW or not channels.size:
        say_nothing_to_draw(axes, "too few samples here")
        return axes
    values = stream.read(span.start, span.stop, channels)
    frequencies, density = spectral_density(values, stream.rate, _window_for(len(values)))
    inner = slice(1, -1)  # without what is constant, and what alternates
    low, middle, high = np.percentile(density[inner], _QUARTILES, axis=1)
    if not middle.all():
        say_nothing_to_draw(axes, "all samples are equal")
        return axes
    color = COLORS[stream.info.kind]
    axes.fill_between(frequencies[inner], low, high, color=color, alpha=0.25, linewidth=0, label="quartiles")
    axes.loglog(frequencies[inner], middle, color=color, linewidth=0.9, label=f"median of {len(channels)} channels")
    axes.set_xlim(frequencies[1], frequencies[-1])
    axes.grid(True, which="major", color="0.9", linewidth=0.5)
    axes.legend(fontsize=6, frameon=False, loc="best")
    return axes


def _window_for(samples: int) -> int:
    """A power of two, of which some fit: the average over them is what makes a spectrum smooth."""
    window = _WINDOW
    while window > _LEAST_WINDOW and window * _LEAST_WINDOWS > samples:
        window //= 2
    return window
