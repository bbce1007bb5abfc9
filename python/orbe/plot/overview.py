"""The overview page: a whole recording at a glance."""

from __future__ import annotations

import textwrap
from pathlib import Path
from typing import TYPE_CHECKING, Optional, Union

import numpy as np

from orbe.description import ProbeDescription
from orbe.errors import OrbeError
from orbe.plot._axes import COLORS, LOST_COLOR, make_axes, tidy
from orbe.plot.rms import rms
from orbe.plot.spectrum import spectrum
from orbe.plot.traces import traces
from orbe.raw_file import RawFile
from orbe.recording import Recording

if TYPE_CHECKING:
    from matplotlib.axes import Axes
    from matplotlib.figure import Figure

_AP_SECONDS = 0.05
_LFP_SECONDS = 1.0
_ADC_SECONDS = 0.2
_ENDINGS = (".png", ".pdf", ".svg")
_WIDTHS = (3.4, 3.0, 2.2, 1.5)
_HEAD_INCHES = 1.0
_PROBE_INCHES = 3.4
_LAST_INCHES = 2.4
_WIDTH_INCHES = 17.0
_DPI = 110
_SEPARATOR = "  ·  "
_LINE_LENGTH = 200


def overview(recording: Recording, at: Optional[float] = None) -> Figure:
    """Draws a page: each probe's traces in both bands, spectra and RMS along it, the ADC inputs, and where samples are
    lost. A raw file is looked through from end to end for it.

    Args:
        recording: of any format.
        at: s since the first sample from which on signals are drawn; the middle of the recording without it.

    Returns:
        The figure, as wide as two pages side by side.

    Raises:
        OrbeError: matplotlib is not there, or the recording has no samples.
    """
    make_axes(None)  # says so when there is no matplotlib
    from matplotlib.backends.backend_agg import FigureCanvasAgg
    from matplotlib.figure import Figure

    if recording.duration == 0.0:
        raise OrbeError(f"'{recording.path}' has no samples to draw")
    start = _start_of(recording, at)
    ports = recording.ports
    heights = [_PROBE_INCHES] * len(ports) + [_LAST_INCHES]
    figure = Figure(figsize=(_WIDTH_INCHES, sum(heights) + _HEAD_INCHES), dpi=_DPI, layout="constrained")
    FigureCanvasAgg(figure)
    figure.suptitle(_head_of(recording), x=0.01, ha="left", fontsize=10, linespacing=1.5)
    rows = figure.subfigures(len(heights), 1, height_ratios=heights, squeeze=False)[:, 0]
    for port, row in zip(ports, rows):
        _draw_probe(row, recording, port, start)
    left, right = rows[-1].subplots(1, 2)
    if "adc" in recording:
        traces(recording["adc"], start, _ADC_SECONDS, axes=left)
    else:
        left.set_axis_off()
    _draw_losses(right, recording)
    return figure


def save_overview(
    recording: Recording, file: Union[str, Path, None] = None, at: Optional[float] = None
) -> Path:
    """Writes the page of :func:`overview` into a file.

    Args:
        file: its name ends in ``.png``, ``.pdf`` or ``.svg``. Without it that of the recording with
            ``_overview.png`` behind it, in the working directory.

    Returns:
        The file.

    Raises:
        OrbeError: as of :func:`overview`; an ending of another kind; the file cannot be written.
    """
    path = Path(f"{recording.path.resolve().stem}_overview.png" if file is None else file)
    if path.suffix.lower() not in _ENDINGS:
        raise OrbeError(f"'{path}': the name of a picture ends in one of {', '.join(_ENDINGS)}")
    figure = overview(recording, at)
    try:
        figure.savefig(path)
    except OSError as error:
        raise OrbeError(f"'{path}' cannot be written: {error.strerror or error}") from error
    return path


def _start_of(recording: Recording, at: Optional[float]) -> float:
    if at is None:
        return max(0.0, recording.duration / 2 - _LFP_SECONDS)
    if not 0.0 <= at < recording.duration:
        raise OrbeError(f"'{recording.path}' has {recording.duration:.3f} s, and nothing at {at:g} s")
    return at


def _head_of(recording: Recording) -> str:
    lost = recording.lost_samples
    time = recording.start_time
    facts = [
        f"{recording.format} recording",
        f"{recording.duration:.2f} s",
        f"{len(recording.ports)} probe" + ("s" if len(recording.ports) != 1 else ""),
        "nothing is lost" if lost == 0 else f"{lost} samples are lost",
    ]
    if time is not None:
        facts.insert(1, time.strftime("%Y-%m-%d %H:%M:%S UTC"))
    lines = [recording.path.resolve().name, _SEPARATOR.join(facts)]
    doubts = []
    if isinstance(recording, RawFile):
        doubts.append(str(recording.damage))
    if not recording.is_described:
        doubts.append("gains and electrodes are assumed")
    lines += textwrap.wrap(_SEPARATOR.join(doubts), _LINE_LENGTH)
    return "\n".join(lines)


def _draw_probe(row: Figure, recording: Recording, port: int, start: float) -> None:
    ap, lfp = recording[f"probe{port}.ap"], recording[f"probe{port}.lfp"]
    row.suptitle(_title_of(recording.description.probe(port)), x=0.01, ha="left", fontsize=9, weight="bold")
    axes = row.subplots(1, len(_WIDTHS) + 1, width_ratios=(*_WIDTHS, _WIDTHS[-1]))
    traces(ap, start, _AP_SECONDS, axes=axes[0])
    traces(lfp, start, _LFP_SECONDS, axes=axes[1])
    _draw_spectra(axes[2], recording, port, start)
    rms(ap, start, axes=axes[3])
    rms(lfp, start, axes=axes[4])
    for place, title in enumerate(("AP band", "LFP band", "spectra", "AP band", "LFP band")):
        axes[place].set_title(title, loc="left", fontsize=8)
    axes[4].set_ylabel("")
    axes[4].sharey(axes[3])


def _draw_spectra(axes: Axes, recording: Recording, port: int, start: float) -> None:
    for kind in ("lfp", "ap"):
        spectrum(recording[f"probe{port}.{kind}"], start, axes=axes)
    axes.autoscale()
    if not axes.lines:
        return
    values = np.concatenate([np.asarray(line.get_ydata()) for line in axes.lines])
    axes.set_ylim(10 ** np.floor(np.log10(values.min())), 10 ** np.ceil(np.log10(values.max())))
    for line in axes.lines:
        line.set_label("LFP" if line.get_color() == COLORS["lfp"] else "AP")
    axes.legend(handles=list(axes.lines), fontsize=6, frameon=False, loc="best")


def _title_of(probe: ProbeDescription) -> str:
    facts = [f"port {probe.port}"]
    if probe.serial_number:
        facts.append(f"probe {probe.serial_number} ({probe.part_number})")
    for name, gains in (("AP", probe.ap_gains), ("LFP", probe.lfp_gains)):
        low, high = gains.min(), gains.max()
        facts.append(f"{name} gain {low:g}" if low == high else f"{name} gains {low:g} to {high:g}")
    facts.append("filter on" if probe.ap_filter else "filter off")
    facts.append("calibrated" if probe.is_calibrated else "not calibrated")
    return _SEPARATOR.join(facts)


def _draw_losses(axes: Axes, recording: Recording) -> None:
    """A line a stream, with what is lost marked in it."""
    streams = [stream for stream in recording if stream.info.kind != "lfp"]
    tidy(axes, "lost samples", "time since the trigger (s)", "")
    for place, stream in enumerate(streams):
        begin = stream.info.start_seconds
        axes.plot([begin, begin + stream.duration], [place, place], color="0.8", linewidth=5, solid_capstyle="butt")
        least = recording.duration / 500
        for gap in stream.gaps:
            first = begin + gap.sample / stream.rate
            width = max(gap.length / stream.rate, least)
            axes.plot([first, first + width], [place, place], color=LOST_COLOR, linewidth=9, solid_capstyle="butt")
        axes.text(
            1.0,
            place,
            f"{stream.lost_samples} of {len(stream)}",
            transform=axes.get_yaxis_transform(),
            fontsize=7,
            va="center",
        )
    axes.set_yticks(range(len(streams)), [stream.name for stream in streams])
    axes.set_ylim(len(streams) - 0.5, -0.5)
