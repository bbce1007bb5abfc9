"""RMS: how strong the signal of each channel is, along the probe."""

from __future__ import annotations

from typing import TYPE_CHECKING, Optional

import numpy as np

from orbe.plot._axes import (
    COLORS,
    RMS_SECONDS,
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

_LEAST = 1e-6


def rms(
    stream: Stream, start: float = 0.0, seconds: float = RMS_SECONDS, axes: Optional[Axes] = None
) -> Axes:
    """Draws the RMS of each channel, its mean taken off, over where its electrode lies on the shank.

    Args:
        stream: any; over the number of the channel where it is of no probe.
        start, seconds: what it is made of, s since sample 0; of it the longest part without a gap.
        axes: to draw into; those of a new figure without it.

    Returns:
        The axes: RMS to the right, distance from the probe's tip upwards.
    """
    axes = make_axes(axes, width=4.0, height=7.0)
    tidy(axes, title_of(stream, "RMS"), f"RMS ({stream.unit})", "distance from the lowest row (µm)")
    span = span_without_gaps(stream, start, seconds)
    channels = connected_channels(stream)
    if span.stop <= span.start or not channels.size:
        say_nothing_to_draw(axes, "no samples here")
        return axes
    strengths = stream.read(span.start, span.stop, channels).std(axis=0)
    positions = stream.info.positions
    color = COLORS[stream.info.kind]
    if positions is None:
        axes.set_ylabel("channel", fontsize=8)
        axes.plot(strengths, channels, ".", markersize=4, color=color)
        return axes
    axes.plot(strengths, positions[channels, 1], ".", markersize=2.5, color=color, alpha=0.7)
    middle = float(np.median(strengths))
    axes.axvline(middle, color="0.5", linewidth=0.8, linestyle="--", label=f"median {_rounded(middle)} {stream.unit}")
    axes.set_xlim(0, 1.1 * max(float(strengths.max()), _LEAST))
    axes.legend(fontsize=6, frameon=False, loc="best")
    return axes


def _rounded(value: float) -> str:
    return f"{value:,.0f}" if value >= 100 else f"{value:.3g}"
