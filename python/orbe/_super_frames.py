"""A probe's super frames (docs/probe-serial-bus.md): 65 rows with one AP sample of every channel and a twelfth of an
LFP sample. Everything here works on many super frames at once."""

from __future__ import annotations

import numpy as np

from orbe._rows import PAYLOAD_WORDS, ROW_WORDS
from orbe.units import CHANNEL_COUNT

ROWS = 65
SLOTS = 12
_FRAMES = 13
_ROWS_PER_FRAME = 5
_ADCS = 32
_VALUE_MASK = 0x03FF
_START_FLAG = 0x0800
_TAG_MASK = 0xF000
_MIDDLE = 512
_COUNTER_BITS = 20
# Rows that are looked at side by side.
_AT_ONCE = 64
COUNTER_SPAN = 1 << _COUNTER_BITS

# The words of a row: the header, then a word a lane with the lane's tag.
_TAGS = np.array([0] + [lane << 12 for lane in range(1, PAYLOAD_WORDS + 1)], dtype=np.uint16)
_TAG_MASKS = np.array([0] + [_TAG_MASK] * PAYLOAD_WORDS, dtype=np.uint16)


def _word_of_value(frame: np.ndarray, value: np.ndarray) -> np.ndarray:
    """Where a value of a frame lies among the 65 * 8 words of a super frame."""
    row = frame * _ROWS_PER_FRAME + value % _ROWS_PER_FRAME
    return row * ROW_WORDS + 1 + value // _ROWS_PER_FRAME


def _adc_and_slot_of_channels() -> tuple[np.ndarray, np.ndarray]:
    channel = np.arange(CHANNEL_COUNT)
    return channel // (2 * SLOTS) * 2 + channel % 2, channel % (2 * SLOTS) // 2


_CHANNEL_ADC, CHANNEL_SLOT = _adc_and_slot_of_channels()
"""The slot in which each channel is sampled, shape (384,)."""

_AP_WORDS = _word_of_value(CHANNEL_SLOT + 1, _CHANNEL_ADC)
_LFP_WORDS = _word_of_value(np.zeros(CHANNEL_COUNT, dtype=np.int64), _CHANNEL_ADC)
_HIGH_WORDS = _word_of_value(np.arange(_FRAMES), np.full(_FRAMES, 33))
_LOW_WORDS = _word_of_value(np.arange(_FRAMES), np.full(_FRAMES, 34))


def find_super_frames(port_rows: np.ndarray) -> tuple[np.ndarray, np.ndarray, int]:
    """Finds the super frames that are in order: thirteen frames whose counters and lane tags are right.

    Args:
        port_rows: rows of one port, uint16, shape (n, 8).

    Returns:
        The first row of each, int64, shape (m,); the counter of its first frame, int64, shape (m,); and how
        many beginnings had to be left out because something in them is wrong or missing.
    """
    starts = np.flatnonzero(port_rows[:, 1] & _START_FLAG)
    starts = starts[starts + ROWS <= len(port_rows)]
    words = port_rows.reshape(-1)
    counters = _counters(words, starts[:, np.newaxis] * ROW_WORDS)
    first = counters[:, 0]
    expected = (first[:, np.newaxis] + np.arange(_FRAMES)) % COUNTER_SPAN
    in_order = (counters == expected).all(axis=1)
    in_order &= ~_have_wrong_tags(port_rows, starts)
    return starts[in_order], first[in_order], int(np.count_nonzero(~in_order))


def _counters(words: np.ndarray, beginnings: np.ndarray) -> np.ndarray:
    high = words[beginnings + _HIGH_WORDS] & _VALUE_MASK
    low = words[beginnings + _LOW_WORDS] & _VALUE_MASK
    return high.astype(np.int64) << 10 | low


def _have_wrong_tags(port_rows: np.ndarray, starts: np.ndarray) -> np.ndarray:
    if _all_tags_are_right(port_rows):
        return np.zeros(len(starts), dtype=bool)
    wrong = ((port_rows & _TAG_MASKS) != _TAGS).any(axis=1)
    before = np.concatenate(([0], np.cumsum(wrong)))
    return before[starts + ROWS] != before[starts]


def _all_tags_are_right(port_rows: np.ndarray) -> bool:
    """Whether what all rows have in common, and what any of them has, is the tags: so it is, nearly always."""
    wide = port_rows[: len(port_rows) // _AT_ONCE * _AT_ONCE].reshape(-1, _AT_ONCE * ROW_WORDS).view(np.uint64)
    rest = port_rows[len(port_rows) // _AT_ONCE * _AT_ONCE :]
    for reduce in (np.bitwise_and.reduce, np.bitwise_or.reduce):
        of_wide = reduce(wide, axis=0).view(np.uint16).reshape(-1, ROW_WORDS)
        if wide.size and ((of_wide & _TAG_MASKS) != _TAGS).any():
            return False
    return not ((rest & _TAG_MASKS) != _TAGS).any()


def super_frame_numbers(counters: np.ndarray) -> np.ndarray:
    """How many super frames the probe has sent before those with these frame counters, modulo 2^20.

    A counter has 20 bits and that of a super frame's first frame is a multiple of thirteen before it is cut to
    them; as 2^20 is none, both together say more than either.
    """
    wraps = counters * 10 % 13  # 2^20 is 9 modulo 13, and 9 * 10 + 1 is a multiple of it
    return (counters + wraps * COUNTER_SPAN) // 13


def ap_values(port_rows: np.ndarray, starts: np.ndarray) -> np.ndarray:
    """The AP samples of super frames: int16, shape (m, 384), 0 in the converter's middle."""
    return _values(port_rows, starts, _AP_WORDS)


def lfp_parts(port_rows: np.ndarray, starts: np.ndarray) -> np.ndarray:
    """What super frames carry of the LFP band: int16, shape (m, 384).

    Each carries the channels of one slot; the same 32 values stand at the channels of all slots.
    """
    return _values(port_rows, starts, _LFP_WORDS)


def _values(port_rows: np.ndarray, starts: np.ndarray, places: np.ndarray) -> np.ndarray:
    words = port_rows.reshape(-1)
    values = words[starts[:, np.newaxis] * ROW_WORDS + places] & _VALUE_MASK
    return values.view(np.int16) - np.int16(_MIDDLE)
