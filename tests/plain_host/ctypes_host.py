"""ctypes_host.py LIBRARY EXPECTATION: a host in Python, with ctypes alone.

Opens the basestation on the recording that the switch file in the working directory names, streams it and compares
every electrode packet with the expectation file (../host/Host_Road_Expectation.h). Exits with 0 when all are equal.
"""

import ctypes
import struct
import sys

SLOT, DOCK, PORTS = 0, 0, 4


class ElectrodePacket(ctypes.Structure):
    """electrodePacket of NeuropixAPI_plain.h."""

    _fields_ = [
        ("timestamp", ctypes.c_uint32 * 12),
        ("apData", (ctypes.c_int16 * 384) * 12),
        ("lfpData", ctypes.c_int16 * 384),
        ("Status", ctypes.c_uint16 * 12),
    ]


def succeed(api, name, *arguments):
    """Calls np_<name>, which must answer SUCCESS."""
    result = getattr(api, "np_" + name)(*arguments)
    if result != 0:
        message = ctypes.create_string_buffer(256)
        api.np_getLastErrorMessage(message, ctypes.c_size_t(len(message)))
        sys.exit(f"ctypes_host: np_{name} answers {result}: {message.value.decode()}")


def text_of(api, name):
    """A text that np_<name> writes into a buffer."""
    text = ctypes.create_string_buffer(64)
    succeed(api, name, text, ctypes.c_size_t(len(text)))
    return text.value.decode()


def main(library, expectation_path):
    api = ctypes.CDLL(library)
    with open(expectation_path, "rb") as file:
        expectation = file.read()
    counts = struct.unpack_from("<4I", expectation, 8)
    position = 32

    api.np_getDeviceList(None, 0)
    succeed(api, "openBS", SLOT)
    if len(text_of(api, "bs_get_fpga_design_label")) != 8:
        sys.exit("ctypes_host: the design's label has not eight digits")
    succeed(api, "start_acquisition", SLOT, 1)
    packet = ElectrodePacket()
    received = ctypes.c_int()
    for port in range(1, PORTS + 1):
        for number in range(counts[port - 1]):
            succeed(api, "readElectrodeData", SLOT, port, DOCK, ctypes.byref(packet), ctypes.byref(received), 1)
            expected = expectation[position : position + ctypes.sizeof(packet)]
            if received.value != 1 or bytes(packet) != expected:
                sys.exit(f"ctypes_host: packet {number} of port {port} differs")
            position += ctypes.sizeof(packet)
    succeed(api, "closeBS", SLOT)
    print(f"{sum(counts)} packets are equal")
    return 0 if sum(counts) > 0 else 1


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], sys.argv[2]))
