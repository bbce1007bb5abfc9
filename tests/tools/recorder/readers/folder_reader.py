"""Opens a recorded folder with neo, in the way that the lab's tools do."""

import numpy as np
from neo.rawio import OpenEphysBinaryRawIO, SpikeGLXRawIO


class Stream:
    """One stream as the reader gives it."""

    def __init__(self, reader, index):
        channels = reader.header["signal_channels"]
        stream = reader.header["signal_streams"][index]
        self.channels = channels[channels["stream_id"] == stream["id"]]
        # Behind the "#" stands what the format itself calls it.
        self.name = str(stream["name"]).split("#")[-1]
        self.size = reader.get_signal_size(0, 0, index)
        self.samples = np.asarray(reader.get_analogsignal_chunk(0, 0, 0, self.size, index))
        self.rate = reader.get_signal_sampling_rate(index)
        self.start = float(reader.get_signal_t_start(0, 0, index))
        self.in_units = reader.rescale_signal_raw_to_float(self.samples, "float64", index)


def open_folder(folder, file_format, with_sync=False):
    reader = {"spikeglx": SpikeGLXRawIO, "open-ephys": OpenEphysBinaryRawIO}[file_format](
        folder, load_sync_channel=with_sync
    )
    reader.parse_header()
    count = len(reader.header["signal_streams"])
    return reader, {stream.name: stream for stream in (Stream(reader, i) for i in range(count))}
