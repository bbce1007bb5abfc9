"""compare.py FOLDER FORMAT EXPECTED: every sample, gain, offset, rate, name, unit and time that neo gives of FOLDER is what
EXPECTED says. Without "is_whole" in EXPECTED the folder may hold less of each stream, from its beginning on."""

import json
import sys

import numpy as np

from folder_reader import open_folder

folder, file_format, expected_file = sys.argv[1:]
with open(expected_file, encoding="utf8") as file:
    expected = json.load(file)

is_whole = expected["is_whole"]
reader, streams = open_folder(folder, file_format)
names = {stream["name"] for stream in expected["streams"]}
assert set(streams) == names if is_whole else set(streams) <= names, (sorted(streams), sorted(names))

compared = 0
for wanted in expected["streams"]:
    if wanted["name"] not in streams:
        continue
    got = streams[wanted["name"]]
    samples = np.fromfile(wanted["file"], dtype="<i2").reshape(-1, len(wanted["channels"]))
    assert got.size == len(samples) if is_whole else 0 < got.size <= len(samples), (wanted["name"], got.size, len(samples))
    assert got.samples.dtype == np.int16
    assert np.array_equal(got.samples, samples[: got.size]), wanted["name"]
    assert [str(name) for name in got.channels["name"]] == wanted["channels"], got.channels["name"]
    assert np.allclose(got.channels["gain"], wanted["gains"], rtol=1e-12, atol=0), wanted["name"]
    assert np.all(got.channels["offset"] == 0)
    assert set(got.channels["units"]) == {wanted["units"]}
    assert got.rate == wanted["rate"]
    assert got.start == wanted["start"], (got.start, wanted["start"])
    assert np.allclose(got.in_units, samples[: got.size] * np.array(wanted["gains"]), rtol=1e-6)
    compared += got.samples.size

if file_format == "spikeglx":
    # The sync input is in bit 6 of the last channel of every stream.
    _, with_sync = open_folder(folder, file_format, with_sync=True)
    for wanted in expected["streams"]:
        if wanted["name"] in with_sync:
            got = with_sync[wanted["name"]]
            sync = np.fromfile(wanted["sync_file"], dtype="u1")[: got.size]
            assert np.array_equal(got.samples[:, -1], sync.astype("i2") << 6), wanted["name"]

print("compared", compared)
