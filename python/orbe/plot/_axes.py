"""Axes that look alike in all pictures, and the spans of a stream that are drawn."""

from __future__ import annotations

from typing import TYPE_CHECKING, Optional

import numpy as np

from orbe.errors import OrbeError
from orbe.stream import Stream

if TYPE_CHECKING:
    from matplotlib.axes import Axes

SPECTRUM_SECONDS = 2.0
"""How much of a stream a spectrum is made of."""

RMS_SECONDS = 1.0
"""How much of a stream its RMS is made of."""

COLORS = {"ap": "#1f5a99", "lfp": "#1d8a5f", "adc": "#a3541c"}
"""Of a stream's kind."""

LOST_COLOR = "#d62728"
_SMALL = 8


def make_axes(axes: Optional[Axes], width: float = 8.0, height: float = 5.0) -> Axes:
    """The axes given, or those of a new figure without a window."""
    if axes is not None:
        return axes
    try:
        from matplotlib.backends.backend_agg import FigureCanvasAgg
        from matplotlib.figure import Figure
    except ImportError as error:
        raise OrbeError("pictures take matplotlib (Debian's python3-matplotlib), which is not there") from error
    figure = Figure(figsize=(width, height), layout="constrained")
    FigureCanvasAgg(figure)
    return figure.add_subplot()


def tidy(axes: Axes, title: str, x: str, y: str) -> None:
    """Title, labels with units, and no more lines than needed."""
    axes.set_title(title, loc="left", fontsize=_SMALL + 1)
    axes.set_xlabel(x, fontsize=_SMALL)
    axes.set_ylabel(y, fontsize=_SMALL)
    axes.tick_params(labelsize=_SMALL - 1)
    for side in ("top", "right"):
        axes.spines[side].set_visible(False)


def say_nothing_to_draw(axes: Axes, why: str) -> None:
    """Writes into the axes why nothing is drawn."""
    axes.text(0.5, 0.5, why, transform=axes.transAxes, ha="center", va="center", fontsize=_SMALL, color="0.4")


def title_of(stream: Stream, what: str) -> str:
    """What is drawn, and of which stream."""
    kind = {"ap": "AP band", "lfp": "LFP band", "adc": "ADC inputs"}[stream.info.kind]
    port = f"port {stream.info.port}, " if stream.info.port is not None else ""
    return f"{what}: {port}{kind}"


def span_without_gaps(stream: Stream, start: float, seconds: float) -> slice:
    """So many seconds from `start` on (s since sample 0), or the longest part of them that no gap is in."""
    first = max(0, round(start * stream.rate))
    last = min(len(stream), first + max(1, round(seconds * stream.rate)))
    best, begin = slice(first, first), first
    for gap in stream.gaps:
        if gap.sample >= last:
            break
        if gap.sample + gap.length > first:
            best = max(best, slice(begin, max(begin, gap.sample)), key=_length)
            begin = gap.sample + gap.length
    return max(best, slice(begin, max(begin, last)), key=_length)


def _length(span: slice) -> int:
    return int(span.stop - span.start)


def connected_channels(stream: Stream) -> np.ndarray:
    """Channels with an electrode, from the tip of the probe up; all, in their order, of a stream without any."""
    positions = stream.info.positions
    if positions is None:
        return np.arange(stream.channel_count)
    channels = np.flatnonzero(~np.isnan(positions[:, 1]))
    return channels[np.lexsort((positions[channels, 0], positions[channels, 1]))]
