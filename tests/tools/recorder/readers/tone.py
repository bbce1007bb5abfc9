"""tone.py FOLDER FORMAT AP_HERTZ AP_UV LFP_UV: a sine of this frequency and amplitude is in every channel of every probe, in
the LFP band of a twelfth of the frequency."""

import sys

import numpy as np

from folder_reader import open_folder

folder, file_format = sys.argv[1:3]
hertz, ap_uv, lfp_uv = (float(number) for number in sys.argv[3:])

_, streams = open_folder(folder, file_format)
looked_at = 0
for name, stream in streams.items():
    is_lfp = name.endswith((".lf", "-LFP"))
    if not is_lfp and not name.endswith((".ap", "-AP")):
        continue
    wanted_hertz = hertz / 12 if is_lfp else hertz
    wanted_uv = lfp_uv if is_lfp else ap_uv
    assert set(stream.channels["units"]) == {"uV"}
    time = stream.start + np.arange(stream.size) / stream.rate
    # What a sine of the wanted frequency explains, by least squares: its two parts and the mean.
    model = np.stack([np.sin(2 * np.pi * wanted_hertz * time), np.cos(2 * np.pi * wanted_hertz * time), np.ones_like(time)])
    parts, residue, _, _ = np.linalg.lstsq(model.T, stream.in_units, rcond=None)
    amplitude = np.hypot(parts[0], parts[1])
    # The values are whole steps of the converter.
    step = stream.channels["gain"].max()
    assert np.all(np.abs(amplitude - wanted_uv) < 0.5 * step), (name, amplitude.min(), amplitude.max(), wanted_uv)
    assert np.all(np.abs(parts[2]) < 0.5 * step), name
    assert np.all(np.sqrt(residue / stream.size) < step), (name, residue.max())
    looked_at += 1
assert looked_at > 0
print("looked at", looked_at)
