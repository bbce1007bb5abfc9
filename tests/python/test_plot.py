"""Pictures: what is drawn where, read back from the axes; and that they are written."""

import subprocess
import sys

import numpy as np
import orbe
import pytest
from orbe import plot

TONE_HZ = 1000.0


@pytest.fixture(scope="module")
def tone(recordings):
    """A tone of 1000 Hz in the AP band of channels 0 to 95, and spikes in the others."""
    signals = ("--signal", "spikes", "--signal", "tone:0-95", "--tone-hz", f"{TONE_HZ:g}")
    return orbe.load(recordings.make("--seconds", "0.4", "--ports", "1", *signals))


@pytest.fixture(scope="module")
def damaged(recordings):
    return orbe.load(recordings.make("--seconds", "0.4", "--ports", "1", "--fault", "lost-row:1@195000+3250"))


def test_traces_are_the_samples_one_above_the_other_with_units(tone):
    stream = tone["probe1.ap"]
    axes = plot.traces(stream, start=0.1, seconds=0.02, channels=[3, 200])
    lower, upper, bar = axes.lines
    for line, channel in ((lower, 3), (upper, 200)):
        values = stream.read(3000, 3600, channel)
        drawn = line.get_ydata()
        assert np.allclose(np.diff(drawn), np.diff(values), atol=0.5)
        assert np.allclose(line.get_xdata(), 0.1 + np.arange(600) / 30000)
    assert np.median(upper.get_ydata()) > np.median(lower.get_ydata())
    low, high = axes.get_ylim()
    assert low < lower.get_ydata().min() and high > upper.get_ydata().max()
    assert [label.get_text() for label in axes.get_yticklabels()] == ["AP3", "AP200"]
    assert axes.get_xlabel() == "time (s)" and axes.get_title(loc="left") == "traces: port 1, AP band"
    (length,) = [float(text.get_text().split()[0]) for text in axes.texts if text.get_text().endswith("µV")]
    assert bar.get_ydata().tolist() == [0, length]


def test_traces_are_spread_along_the_probe_and_show_what_is_lost(damaged):
    axes = plot.traces(damaged["probe1.ap"], start=0.09, seconds=0.02)
    labels = [label.get_text() for label in axes.get_yticklabels()]
    assert len(labels) == 16 and labels[0] == "AP0" and labels[-1] == "AP383" and "AP191" not in labels
    (gap,) = axes.patches
    assert gap.get_extents().transformed(axes.transData.inverted()).x0 == pytest.approx(0.1, abs=1e-4)
    empty = plot.traces(damaged["probe1.ap"], start=5.0)
    assert [text.get_text() for text in empty.texts] == ["no samples here"]


def test_a_spectrum_has_its_tone_where_it_is(tone):
    stream = tone["probe1.ap"]
    values = stream.read(0, 12000, slice(0, 96))
    frequencies, density = plot.spectral_density(values, stream.rate)
    peaks = frequencies[density.argmax(axis=0)]
    assert np.abs(peaks - TONE_HZ).max() < frequencies[1]
    power = (density**2).sum(axis=0) * frequencies[1]
    assert np.allclose(power, values.var(axis=0), rtol=0.02)
    axes = plot.spectrum(stream)
    assert axes.get_ylabel() == "density (µV/√Hz)" and axes.get_xscale() == axes.get_yscale() == "log"
    with pytest.raises(ValueError, match="takes 64 samples at least, and not 63"):
        plot.spectral_density(values[:63], 30000)


def test_the_rms_of_each_channel_stands_where_its_electrode_is(tone):
    stream = tone["probe1.ap"]
    axes = plot.rms(stream, start=0.1, seconds=0.2)
    drawn = {float(y): float(x) for x, y in zip(axes.lines[0].get_xdata(), axes.lines[0].get_ydata())}
    assert len(axes.lines[0].get_xdata()) == 383  # channel 191 has no electrode
    strengths = stream.read(3000, 9000).std(axis=0)
    for channel in (1, 95, 383):
        assert drawn[stream.info.positions[channel, 1]] == pytest.approx(strengths[channel], rel=1e-3)
    assert strengths[:96].min() > 3 * strengths[96:191].max()
    assert "µm" in axes.get_ylabel() and "µV" in axes.get_xlabel()


def test_what_is_lost_is_left_out_of_spectra_and_rms(damaged):
    from orbe.plot._axes import span_without_gaps

    stream = damaged["probe1.ap"]
    assert stream.gaps == [orbe.Gap(3000, 50)]
    assert span_without_gaps(stream, 0.05, 0.2) == slice(3050, 7500)
    assert span_without_gaps(stream, 0.05, 0.06) == slice(1500, 3000)
    assert span_without_gaps(stream, 0.1, 0.001) == slice(3000, 3000)


@pytest.mark.parametrize("ending", ["png", "pdf", "svg"])
def test_an_overview_shows_everything_and_is_written(damaged, tmp_path, ending):
    figure = plot.overview(damaged)
    texts = [text.get_text() for text in figure.findobj(match=lambda artist: hasattr(artist, "get_text"))]
    whole = "\n".join(texts)
    for expected in (
        damaged.path.name,
        "50 samples are lost",
        "rows of port 1 lost",
        "gains and electrodes are assumed",
        "port 1  ·  AP gain 500  ·  LFP gain 250",
        "AP band",
        "spectra",
        "distance from the lowest row (µm)",
        "traces: ADC inputs",
        "lost samples",
        "50 of 12000",
    ):
        assert expected in whole, expected
    path = plot.save_overview(damaged, tmp_path / f"page.{ending}", at=0.1)
    beginning = {"png": b"\x89PNG", "pdf": b"%PDF", "svg": b"<?xml"}[ending]
    assert path.read_bytes().startswith(beginning) and path.stat().st_size > 20_000


def test_pictures_that_cannot_be_are_told(damaged, tmp_path):
    with pytest.raises(orbe.OrbeError, match="ends in one of .png, .pdf, .svg"):
        plot.save_overview(damaged, "page.txt")
    with pytest.raises(orbe.OrbeError, match="has 0.400 s, and nothing at 7 s"):
        plot.overview(damaged, at=7.0)
    with pytest.raises(orbe.OrbeError, match="cannot be written: No such file"):
        plot.save_overview(damaged, tmp_path / "nowhere" / "page.png")


def test_nothing_but_pictures_takes_matplotlib():
    program = (
        "import sys; sys.modules['matplotlib'] = None\n"
        "import orbe, orbe.plot\n"
        "try: orbe.plot.traces(None)\n"
        "except orbe.OrbeError as error: print(error)\n"
    )
    ended = subprocess.run([sys.executable, "-c", program], check=True, capture_output=True, text=True)
    assert ended.stdout == "pictures take matplotlib (Debian's python3-matplotlib), which is not there\n"
