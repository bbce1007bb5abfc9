"""events.py FOLDER EXPECTED: the rising edges of the sync input that neo gives of FOLDER, and the message."""

import json
import sys

import numpy as np

from folder_reader import open_folder

folder, expected_file = sys.argv[1:]
with open(expected_file, encoding="utf8") as file:
    expected = json.load(file)

reader, _ = open_folder(folder, "open-ephys")
channels = {str(channel["name"]): index for index, channel in enumerate(reader.header["event_channels"])}
assert set(channels) == {"Messages", expected["channel"]}, channels

times, _, labels = reader.get_event_timestamps(0, 0, channels["Messages"])
assert len(times) == 1 and times[0] == 0.0
assert labels[0].startswith("Recorded from box, first trigger at 2024-05-31T12:00:00.000Z"), labels

times, durations, labels = reader.get_event_timestamps(0, 0, channels[expected["channel"]])
seconds = reader.rescale_event_timestamp(times, "float64", channels[expected["channel"]])
assert np.allclose(seconds, expected["rising"], rtol=0, atol=1e-9), seconds
assert np.allclose(durations, expected["durations"], rtol=0, atol=1e-9), durations
print("found", len(times))
