"""Recorded folders, as orbe-recording's export writes them of raw files: every sample is the raw file's, and what is
known of it is there."""

import json
import os
import shutil
import subprocess
from pathlib import Path

import numpy as np
import orbe
import pytest

PROGRAM = os.environ["ORBE_RECORDING_PROGRAM"]
FORMATS = ("spikeglx", "open-ephys")
DAMAGE = ("--fault", "lost-row:1@65000+65", "--fault", "lost-row:2@120000+1300")


def export(raw: Path, folder: Path, *arguments: str) -> Path:
    subprocess.run([PROGRAM, "export", str(raw), str(folder), *arguments], check=True, capture_output=True)
    return folder


@pytest.mark.parametrize("format", FORMATS)
def test_samples_are_those_of_the_raw_file(recordings, tmp_path, format):
    path = recordings.make("--seconds", "0.5", "--ports", "1,3")
    raw = orbe.load(path)
    with orbe.load(export(path, tmp_path / "run", "--format", format)) as folder:
        assert folder.format == format and list(folder.streams) == list(raw.streams)
        assert folder.ports == (1, 3) and folder.lost_samples == 0 and folder.is_described
        for stream in folder:
            expected = raw[stream.name]
            length = len(stream)
            assert length > 0.9 * len(expected) and stream.gaps == []
            columns = slice(0, expected.channel_count)
            assert np.array_equal(stream.counts(channels=columns), expected.counts(0, length))
            assert np.array_equal(stream.read(5, 50, 3), expected.read(5, 50, 3))
            assert np.array_equal(stream.sync(), expected.sync(0, length))
            assert stream.info.rate == expected.info.rate and stream.unit == expected.unit
            assert np.array_equal(stream.info.scale[columns], expected.info.scale)
        assert folder["probe1.ap"].sync().any()


@pytest.mark.parametrize("format", FORMATS)
def test_gaps_are_where_the_raw_file_has_them(recordings, tmp_path, format):
    path = recordings.make("--seconds", "0.5", "--ports", "1,2", *DAMAGE)
    raw = orbe.load(path)
    with orbe.load(export(path, tmp_path / "run", "--format", format)) as folder:
        for name in ("probe1.ap", "probe2.ap"):
            stream = folder[name]
            lost = np.zeros(len(stream), dtype=bool)
            for gap in stream.gaps:
                lost[gap.sample : gap.sample + gap.length] = True
            assert 0 < stream.lost_samples == lost.sum() < 400
            assert not stream.counts()[lost].any()
            assert np.array_equal(stream.counts()[~lost], raw[name].counts(0, len(stream))[~lost])
            assert all(lost[gap.sample : gap.sample + gap.length].all() for gap in raw[name].gaps)


@pytest.mark.parametrize("format", FORMATS)
def test_a_part_of_a_recording_keeps_its_time_and_channels(recordings, tmp_path, format):
    path = recordings.make("--seconds", "0.5", "--ports", "1,3")
    arguments = ("--format", format, "--from", "0.25", "--seconds", "0.125", "--channels", "8-15,100", "--ports", "3")
    with orbe.load(export(path, tmp_path / "run", *arguments, "--ap-gain", "1000")) as folder:
        assert folder.ports == (3,)
        stream = folder["probe3.ap"]
        first, last = np.round(stream.seconds()[[0, -1]] * 30_000).astype(int)
        assert abs(first - 7_500) < 12 and abs(len(stream) - 3_750) < 12 and last - first == len(stream) - 1
        assert stream.info.channel_names == tuple(f"AP{channel}" for channel in [*range(8, 16), 100])
        assert stream.info.electrodes.tolist() == [*range(8, 16), 100]
        assert stream.info.positions[-1].tolist() == [27.0, 1000.0]
        assert stream.info.gains.tolist() == [1000] * 9 and stream.info.scale[0] == pytest.approx(1.171875)
        channels = [*range(8, 16), 100]
        assert np.array_equal(stream.counts(), orbe.load(path)["probe3.ap"].counts(first, last + 1, channels))
        lfp = folder["probe3.lfp"]
        expected = orbe.load(path)["probe3.lfp"].counts(first // 12, (last + 1) // 12, channels)
        assert np.array_equal(lfp.counts(), expected)
        assert np.array_equal(lfp.sync(), stream.sync()[::12])


def test_a_raw_file_in_a_folder_has_its_description(recordings, tmp_path):
    path = recordings.make("--seconds", "0.5", "--ports", "1,3")
    folder = export(path, tmp_path / "run", "--lfp-gain", "125")
    description = json.loads((folder / "orbe_recording.json").read_text())
    raw = tmp_path / "raw"
    raw.mkdir()
    (raw / "orbe_recording.json").write_text(json.dumps({**description, "format": "raw", "first_sample": 240}))
    with pytest.raises(orbe.RecordingError, match="raw_data.bin' cannot be read: No such file"):
        orbe.load(raw)
    shutil.copy(path, raw / "raw_data.bin")
    for recording in (orbe.load(raw), orbe.load(raw / "raw_data.bin")):
        assert recording.format == "raw" and recording.is_described
        assert recording["probe1.lfp"].info.gains[0] == 125
        assert recording["probe1.ap"].info.electrodes[191] == -1
        assert [stream.info.start_seconds for stream in recording] == [0.0] * 5
    assert not orbe.load(path).is_described


@pytest.fixture(params=FORMATS)
def folder(request, recordings, tmp_path):
    path = recordings.make("--seconds", "0.05", "--ports", "1,3")
    return export(path, tmp_path / "run", "--format", request.param)


def only(folder, pattern):
    (found,) = folder.glob(pattern)
    return found


def data_file(folder):
    return only(folder, "**/*imec0.ap.bin" if list(folder.glob("**/*.bin")) else "**/*ProbeA-AP/continuous.dat")


def test_half_written_files_are_told(folder):
    path = data_file(folder)
    os.truncate(path, path.stat().st_size - 100)
    with pytest.raises(orbe.RecordingError, match=f"'.*{path.name}' was not finished: .* orbe-record repair"):
        orbe.load(folder)
    with path.open("ab") as file:
        file.truncate(path.stat().st_size // 770 * 770 // 768 * 768)
    with pytest.raises(orbe.RecordingError, match="was not finished: .* orbe-record repair mends the folder"):
        orbe.load(folder)


@pytest.mark.parametrize(
    "text, message",
    [
        ("{", "orbe_recording.json' is damaged: "),
        ('{"format": "raw"}', "orbe_recording.json' is damaged: there is no 'saved_channels'"),
        ("[]", "orbe_recording.json' is damaged: "),
    ],
)
def test_damaged_descriptions_are_told(folder, text, message):
    (folder / "orbe_recording.json").write_text(text)
    with pytest.raises(orbe.RecordingError, match=message):
        orbe.load(folder)


@pytest.mark.parametrize(
    "name, value, message",
    [
        ("format", "wav", "names a format that is not known: 'wav'"),
        ("start_time", "yesterday", "is damaged: time data 'yesterday'"),
        ("saved_channels", [3, 3], "is damaged: the saved channels are not ascending numbers below 384"),
    ],
)
def test_wrong_entries_of_descriptions_are_told(folder, name, value, message):
    path = folder / "orbe_recording.json"
    path.write_text(json.dumps({**json.loads(path.read_text()), name: value}))
    with pytest.raises(orbe.RecordingError, match=message):
        orbe.load(folder)


@pytest.mark.parametrize(
    "name, value, message",
    [
        ("ap_gains", [500], "ap_gains has 1 entries and not 384"),
        ("lfp_gains", [0] * 384, "a gain is not above 0"),
        ("electrodes", [960] * 384, "the electrodes are not numbers from -1 to 959"),
        ("port", 5, "there is no port 5"),
    ],
)
def test_wrong_entries_of_probes_are_told(folder, name, value, message):
    path = folder / "orbe_recording.json"
    description = json.loads(path.read_text())
    description["probes"][0][name] = value
    path.write_text(json.dumps(description))
    with pytest.raises(orbe.RecordingError, match=message):
        orbe.load(folder)


def test_missing_files_are_told(folder):
    for path in [*folder.glob("**/*imec1.lf.meta"), *folder.glob("**/structure.oebin")]:
        path.unlink()
    with pytest.raises(orbe.RecordingError, match="is not whole: .* is not there"):
        orbe.load(folder)


def test_a_damaged_table_of_gaps_is_told(folder):
    (folder / "gaps.csv").write_text("stream,sample,length\nimec0.ap,12")
    with pytest.raises(orbe.RecordingError, match="gaps.csv' is damaged"):
        orbe.load(folder)
