"""What orbe-record writes, as Python opens it: in every format, and after the recorder was killed."""

import os
import subprocess
import time
from pathlib import Path

import numpy as np
import orbe
import pytest

PROGRAM = os.environ["ORBE_RECORD_PROGRAM"]


def compare(folder: Path, path: Path) -> None:
    """Every sample is that of the raw file that was played."""
    raw = orbe.load(path)
    recording = orbe.load(folder)
    assert list(recording.streams) == list(raw.streams) and recording.lost_samples == 0
    assert recording.is_described and recording.description.probe(1).serial_number == 900000001
    assert recording.start_time is not None
    for stream in recording:
        first = round(stream.info.start_seconds * stream.rate)
        channels = range(raw[stream.name].channel_count)
        expected = raw[stream.name].counts(first, first + len(stream))
        assert len(stream) > 0.1 * stream.rate
        assert np.array_equal(stream.counts(channels=channels)[: len(expected)], expected)


@pytest.mark.parametrize("format", ["spikeglx", "open-ephys", "raw"])
def test_every_format_is_opened(recordings, tmp_path, format):
    path = recordings.make("--seconds", "0.5", "--ports", "1,2")
    arguments = [PROGRAM, "run", "--simulation", str(path), "--format", format, "--seconds", "0.3"]
    subprocess.run(arguments, check=True, capture_output=True, timeout=60)
    compare(tmp_path / "run", path)


@pytest.mark.parametrize("format", ["spikeglx", "open-ephys"])
def test_a_killed_recording_is_opened_after_its_repair(recordings, tmp_path, format):
    path = recordings.make("--seconds", "3", "--ports", "1")
    arguments = [PROGRAM, "run", "--simulation", str(path), "--format", format]
    recorder = subprocess.Popen(arguments, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    deadline = time.monotonic() + 60
    while sum(file.stat().st_size for file in tmp_path.glob("run/**/*") if file.is_file()) < 20_000_000:
        assert time.monotonic() < deadline and recorder.poll() is None
        time.sleep(0.01)
    recorder.kill()
    recorder.wait()
    try:
        orbe.load(tmp_path / "run")
        is_whole = True
    except orbe.RecordingError as error:
        is_whole = False
        assert "orbe-record repair" in str(error)
    assert not is_whole or format == "open-ephys", "its metadata still say that there is nothing"
    subprocess.run([PROGRAM, "repair", "run"], check=True, capture_output=True)
    compare(tmp_path / "run", path)
