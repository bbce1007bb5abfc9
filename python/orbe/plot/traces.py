"""Traces: the samples of some channels over time, one above the other."""

from __future__ import annotations

from typing import TYPE_CHECKING, Optional, Sequence

import numpy as np

from orbe.plot._axes import COLORS, LOST_COLOR, connected_channels, make_axes, say_nothing_to_draw, tidy, title_of
from orbe.stream import Stream

if TYPE_CHECKING:
    from matplotlib.axes import Axes

_MOST_TRACES = 16
_LEAST_SPACING = 1e-6
# Between neighbouring traces lies what this part of all samples does not go beyond, to either side.
_PERCENTILE = 99.5
# What the outer traces get below and above them, in such distances.
_MOST_ROOM = 2.0


def traces(
    stream: Stream,
    start: float = 0.0,
    seconds: float = 0.1,
    channels: Optional[Sequence[int]] = None,
    axes: Optional[Axes] = None,
) -> Axes:
    """Draws samples of channels one above the other, the one nearest to the probe's tip lowest, with a scale bar.

    Args:
        stream: any.
        start, seconds: what is drawn, s since sample 0.
        channels: at most 16 along the probe without it.
        axes: to draw into; those of a new figure without it.

    Returns:
        The axes. Lost samples are shaded.
    """
    axes = make_axes(axes)
    first = max(0, round(start * stream.rate))
    last = min(len(stream), first + max(1, round(seconds * stream.rate)))
    chosen = _spread(connected_channels(stream)) if channels is None else np.asarray(channels, dtype=np.int64)
    tidy(axes, title_of(stream, "traces"), "time (s)", "channel")
    if last <= first or not chosen.size:
        say_nothing_to_draw(axes, "no samples here")
        return axes
    values = stream.read(first, last, chosen)
    times = stream.seconds(first, last)
    values = values - np.median(values, axis=0)
    spacing = max(2 * float(np.percentile(np.abs(values), _PERCENTILE)), _LEAST_SPACING)
    for place, trace in enumerate(values.T):
        axes.plot(times, trace + place * spacing, color=COLORS[stream.info.kind], linewidth=0.6)
    for gap in stream.gaps:
        if gap.sample < last and gap.sample + gap.length > first:
            begin = stream.info.start_seconds + gap.sample / stream.rate
            axes.axvspan(begin, begin + gap.length / stream.rate, color=LOST_COLOR, alpha=0.25, linewidth=0)
    axes.set_xlim(times[0], times[0] + (last - first) / stream.rate)
    lowest, highest = float(values[:, 0].min()), float(values[:, -1].max())
    axes.set_ylim(
        max(min(lowest, -0.5 * spacing), -_MOST_ROOM * spacing) - 0.2 * spacing,
        (len(chosen) - 1) * spacing + min(max(highest, 0.5 * spacing), _MOST_ROOM * spacing) + 0.2 * spacing,
    )
    axes.set_yticks(np.arange(len(chosen)) * spacing, [stream.info.channel_names[i] for i in chosen])
    _draw_scale_bar(axes, spacing, stream.unit)
    return axes


def _spread(channels: np.ndarray) -> np.ndarray:
    """At most as many as can be told apart, evenly."""
    count = min(len(channels), _MOST_TRACES)
    return channels[np.linspace(0, len(channels) - 1, count).round().astype(np.int64)] if count else channels


def _draw_scale_bar(axes: Axes, spacing: float, unit: str) -> None:
    """A bar of a round length, no longer than the distance between traces."""
    decade = 10.0 ** np.floor(np.log10(spacing))
    length = decade * max(step for step in (1.0, 2.0, 5.0) if step * decade <= spacing)
    right = 1.01
    blend = axes.get_yaxis_transform()
    axes.plot([right, right], [0, length], transform=blend, color="black", linewidth=2, clip_on=False)
    axes.text(
        right + 0.01, length / 2, f"{length:g} {unit}", transform=blend, rotation=90, va="center", fontsize=7
    )
