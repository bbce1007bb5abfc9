"""Raw files, decoded without the library: against a decoder that takes the stream apart word by word, and on files that
are not as they should be."""

from pathlib import Path

import numpy as np
import orbe
import pytest

ROW = 16


class WordByWord:
    """The samples of a port of an undamaged file, by the formats' tables and nothing else."""

    def __init__(self, path: Path, port: int, super_frames: int) -> None:
        data = path.read_bytes()
        rows = [data[i : i + ROW] for i in range(0, len(data), ROW) if data[i] == 0xD0 + port - 1]
        self.ap = np.zeros((super_frames, 384), dtype=np.int16)
        self.lfp = np.zeros((super_frames // 12, 384), dtype=np.int16)
        for frame in range(super_frames * 13):
            values = self._values(rows[frame * 5 : frame * 5 + 5])
            assert values[33] << 10 | values[34] == frame
            band, slot = (self.lfp, frame // 13 % 12) if frame % 13 == 0 else (self.ap, frame % 13 - 1)
            sample = frame // 156 if frame % 13 == 0 else frame // 13
            if sample < len(band):
                for adc in range(32):
                    band[sample, 24 * (adc // 2) + adc % 2 + 2 * slot] = values[adc] - 512

    @staticmethod
    def _values(rows: list) -> list:
        values = [0] * 35
        for number, row in enumerate(rows):
            for lane in range(7):
                word = row[2 + 2 * lane] | row[3 + 2 * lane] << 8
                assert word >> 12 == lane + 1
                values[5 * lane + number] = word & 1023
        return values


def test_samples_are_those_of_a_decoder_that_goes_word_by_word(recordings):
    path = recordings.make("--seconds", "0.02")
    raw = orbe.load(path)
    for port in (1, 4):
        expected = WordByWord(path, port, 600)
        assert np.array_equal(raw[f"probe{port}.ap"].counts(), expected.ap)
        assert np.array_equal(raw[f"probe{port}.lfp"].counts(), expected.lfp)


def test_adc_inputs_are_those_of_frames_cut_by_hand(recordings):
    path = recordings.make("--seconds", "0.02")
    rows = np.fromfile(path, dtype="<u2").reshape(-1, 8)
    words = rows[(rows[:, 0] & 0xFF) == 0xD4][:, 1:].ravel()
    frames = words[: len(words) // 20 * 20].reshape(-1, 20)
    assert (frames[:, 0] == 0x2A53).all()
    raw = orbe.load(path)
    assert np.array_equal(raw["adc"].counts(), (frames[:, 8:16].astype(int) - 32768).astype(np.int16))
    ttl = frames[:, 16] >> np.arange(8, 16)[:, np.newaxis] & 1
    assert np.array_equal(raw.ttl(0, len(frames)), ttl.T.astype(bool))
    assert np.allclose(raw["adc"].read(0, 5), raw["adc"].counts(0, 5) * (5 / 32768))


def test_frames_with_amplifier_data_are_found_by_their_length(recordings):
    few = recordings.make("--seconds", "0.05", "--ports", "1", "--rhd-streams", "0", "--seed", "3")
    many = recordings.make("--seconds", "0.05", "--ports", "1", "--rhd-streams", "3", "--seed", "3")
    assert np.array_equal(orbe.load(few)["adc"].counts(0, 1400), orbe.load(many)["adc"].counts(0, 1400))


def test_spans_are_read_wherever_they_lie(recordings):
    raw = orbe.load(recordings.make("--seconds", "1.2", "--ports", "2,3"))
    for name in ("probe2.ap", "probe3.lfp", "adc"):
        stream = raw[name]
        whole = stream.counts()
        assert len(whole) == len(stream)
        random = np.random.default_rng(7)
        for start, stop in np.sort(random.integers(0, len(stream), (20, 2))):
            assert np.array_equal(stream.counts(int(start), int(stop)), whole[start:stop])
        assert np.array_equal(stream.counts(-10), whole[-10:])
        assert np.array_equal(stream[5:9, [1, 3]], stream.read(5, 9)[:, [1, 3]])
        assert stream[5:9, 2].shape == (4,) and stream.read(5, 5).shape == (0, stream.channel_count)
        assert stream.counts(len(stream) + 5, len(stream) + 9).shape == (0, stream.channel_count)
        with pytest.raises(TypeError, match="spans of samples without a step"):
            stream[5]


def test_only_what_is_needed_of_a_file_is_looked_through(recordings):
    raw = orbe.load(recordings.make("--seconds", "1.2", "--ports", "2,3"))
    raw["probe2.ap"].counts(0, 100)
    assert not raw._index.is_complete
    seen = []
    raw.index(lambda done, whole: seen.append((done, whole)))
    assert raw._index.is_complete and seen[-1][0] == seen[-1][1] == raw.path.stat().st_size


def test_lost_samples_are_gaps_that_read_0(recordings):
    clean = orbe.load(recordings.make("--seconds", "0.5"))
    damaged = orbe.load(
        recordings.make("--seconds", "0.5", "--fault", "lost-row:1@65000+650", "--fault", "lost-row:2@130010+5")
    )
    assert damaged["probe1.ap"].gaps == [orbe.Gap(1000, 10)]
    assert damaged["probe2.ap"].gaps == [orbe.Gap(2000, 1)]
    assert damaged["probe3.ap"].gaps == [] == damaged["probe1.lfp"].gaps
    expected = clean["probe1.ap"].counts()
    expected[1000:1010] = 0
    assert np.array_equal(damaged["probe1.ap"].counts(), expected)
    assert damaged["probe1.ap"].lost_samples == 10 and damaged.lost_samples == 11
    assert damaged.damage.lost_rows == {0: 650 % 256, 1: 5}
    assert "138 rows of port 1 lost" in str(damaged.damage)


def test_lost_parts_of_lfp_samples_keep_what_was_before(recordings):
    clean = orbe.load(recordings.make("--seconds", "0.5"))["probe1.lfp"].counts()
    damaged = orbe.load(recordings.make("--seconds", "0.5", "--fault", "lost-row:1@65000+650"))["probe1.lfp"].counts()
    # Super frames 1000 to 1009 are those of slots 4 to 11 of LFP sample 83 and 0 and 1 of sample 84.
    slots = np.arange(384) % 24 // 2
    expected = clean.copy()
    expected[83, slots >= 4] = clean[82, slots >= 4]
    expected[84, slots < 2] = clean[83, slots < 2]
    assert np.array_equal(damaged, expected)


def test_whole_lost_lfp_samples_are_gaps(recordings):
    stream = orbe.load(recordings.make("--seconds", "0.5", "--fault", "lost-row:1@65000+2600"))["probe1.lfp"]
    assert stream.gaps == [orbe.Gap(84, 2)]
    assert not stream.counts(84, 86).any() and stream.counts(86, 87).any()


def test_damage_of_every_kind_is_counted(recordings):
    faults = "wrong-tag:1@70 bad-marker:2@650 missing-flag:3@100 cut-frame:rhd@40 unknown-row@5000+3 lost-row:rhd@300"
    raw = orbe.load(recordings.make("--seconds", "0.5", *sum((["--fault", fault] for fault in faults.split()), [])))
    damage = raw.damage
    assert damage.super_frames[1] == 1 and damage.rows_without_marker == 1 and damage.unknown_rows == 3
    assert damage.lost_rows[4] == 1 and damage.rhd_frames > 0
    assert raw["probe3.ap"].gaps == [orbe.Gap(100, 1)]
    clean = orbe.load(recordings.make("--seconds", "0.5"))
    for name in ("probe1.ap", "probe2.ap", "adc"):
        length = min(len(raw[name]), len(clean[name]))
        lost = np.zeros(length, dtype=bool)
        for gap in raw[name].gaps:
            lost[gap.sample : gap.sample + gap.length] = True
        assert 0 < lost.sum() < 12
        same = raw[name].counts(0, length) == clean[name].counts(0, length)
        assert same[~lost].all()
    assert not clean.damage and str(clean.damage) == "nothing is damaged"


def test_a_file_may_end_and_begin_anywhere(recordings, tmp_path):
    whole = recordings.make("--seconds", "0.1")
    data = whole.read_bytes()
    cut = tmp_path / "cut.bin"
    cut.write_bytes(data[ROW * 1001 : 5_000_007])
    raw, expected = orbe.load(cut), orbe.load(whole)
    counts = raw["probe1.ap"].counts()
    whole_counts = expected["probe1.ap"].counts()
    found = [sample for sample in range(10) if np.array_equal(counts[0], whole_counts[sample])]
    assert len(found) == 1
    assert found[0] > 0 and np.array_equal(counts, whole_counts[found[0] : found[0] + len(counts)])
    lfp = raw["probe1.lfp"]
    sample = -(-found[0] // 12)
    assert lfp.info.start_seconds == pytest.approx((sample * 12 - found[0]) / 30000)
    assert np.array_equal(lfp.counts(), expected["probe1.lfp"].counts(sample, sample + len(lfp)))


def test_files_that_are_no_recordings_are_refused(tmp_path):
    (tmp_path / "empty.bin").touch()
    (tmp_path / "text.bin").write_text("no recording at all\n" * 100)
    for name, message in (
        ("empty.bin", "does not hold a single row"),
        ("text.bin", "is no raw recording of this box: of its first 125 rows 0 have"),
        ("none.bin", "is not there"),
    ):
        with pytest.raises(orbe.RecordingError, match=message):
            orbe.load(tmp_path / name)
    with pytest.raises(orbe.RecordingError, match="is no recording: there is no orbe_recording.json in it"):
        orbe.load(tmp_path)


def test_streams_that_are_not_there_are_told(recordings):
    raw = orbe.load(recordings.make("--seconds", "0.05", "--ports", "3", "--no-rhd"))
    assert raw.ports == (3,) and list(raw.streams) == ["probe3.ap", "probe3.lfp"] and "adc" not in raw
    with pytest.raises(KeyError, match="has no stream 'probe1.ap'; it has probe3.ap, probe3.lfp"):
        raw["probe1.ap"]
    with pytest.raises(orbe.RecordingError, match="has no ADC inputs"):
        raw["probe3.ap"].sync(0, 10)


@pytest.mark.parametrize("chunk_rows", [977, 4_001, 20_000])
def test_what_is_found_does_not_depend_on_the_chunks(recordings, monkeypatch, chunk_rows):
    faults = "lost-row~2e-4 bad-marker~1e-4 wrong-tag:1~1e-5 missing-flag:2~2e-3 cut-frame:rhd~5e-3 unknown-row~1e-4"
    path = recordings.make("--seconds", "0.05", *sum((["--fault", fault] for fault in faults.split()), []))
    whole = orbe.load(path)
    whole.index()
    monkeypatch.setattr("orbe._raw_index._CHUNK_ROWS", chunk_rows)
    pieces = orbe.load(path)
    assert pieces.damage == whole.damage and whole.damage
    for stream in whole:
        other = pieces[stream.name]
        assert other.gaps == stream.gaps and len(other) == len(stream)
        assert np.array_equal(other.counts(), stream.counts())
    assert all(whole[name].gaps for name in ("probe1.ap", "probe4.ap", "adc"))
