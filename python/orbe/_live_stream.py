"""What the live streams have in common: waiting for packets, sample numbers, lost samples, iteration."""

from __future__ import annotations

import time
from abc import ABC, abstractmethod
from typing import Generic, Iterator, Optional, TypeVar

import numpy as np

from orbe._stamps import StampCounter
from orbe.errors import StreamStalled

Block = TypeVar("Block")

DEFAULT_TIMEOUT = 1.0
_POLL_SECONDS = 0.002
# What the library's queues hold, less what comes while a block is taken.
_LONGEST_BLOCK_SECONDS = 60.0
# Samples before the first whole packet of a run, which are no loss.
_FREE_HEAD = 12


class LiveStream(ABC, Generic[Block]):
    """A stream of the open box, read by one thread at a time."""

    def __init__(self, name: str, packet_rate: float, is_simulated: bool) -> None:
        self._name = name
        self._packet_rate = packet_rate
        self._is_simulated = is_simulated
        self._begin_run()

    def _begin_run(self) -> None:
        """Counts anew: the box has been started."""
        self._stamps = StampCounter()
        self._next = 0
        self._lost = 0

    @property
    def lost_samples(self) -> int:
        """Samples lost since the start, as far as has been read."""
        return self._lost

    @abstractmethod
    def available(self) -> int:
        """Packets that wait in the library's queue, which holds 2 s."""

    @abstractmethod
    def _take(self, wanted: int, wait: _Wait) -> Optional[Block]:
        """So many packets, or what came until `wait` had ended; None for none."""

    def read(self, seconds: Optional[float] = None, timeout: float = DEFAULT_TIMEOUT) -> Optional[Block]:
        """The next samples.

        Args:
            seconds: waits for so much; without it, answers at once with what is there.
            timeout: s for which the stream may bring nothing; what came until then is answered.

        Returns:
            A block; None when nothing is there, or a recording that is played is over.

        Raises:
            StreamStalled: the box has brought nothing at all.
            ValueError: longer than a minute, which would take much memory: read less at a time.
        """
        if seconds is None:
            return self._take(self.available(), _Wait(0.0))
        if not 0.0 < seconds <= _LONGEST_BLOCK_SECONDS:
            raise ValueError(f"a block has up to {_LONGEST_BLOCK_SECONDS:g} s, and not {seconds:g}")
        wait = _Wait(timeout)
        block = self._take(max(1, round(seconds * self._packet_rate)), wait)
        if block is None and not self._is_simulated:
            raise StreamStalled(f"{self._name} has brought nothing for {timeout:g} s")
        return block

    def blocks(self, seconds: float = 0.1, timeout: float = DEFAULT_TIMEOUT) -> Iterator[Block]:
        """Blocks of so many seconds, one after the other, as they come. Arguments and errors as of :meth:`read`.

        A recording that is played ends the iteration; the last block is shorter.
        """
        while True:
            block = self.read(seconds, timeout)
            if block is None:
                return
            yield block

    def _follow(self, stamps: np.ndarray) -> tuple[np.ndarray, int]:
        """Sample numbers of the next stamps, and how many samples are missing before and among them."""
        numbers = self._stamps.follow(stamps)
        first, last = int(numbers.flat[0]), int(numbers.flat[-1])
        lost = last + 1 - self._next - numbers.size
        if self._next == 0 and first < _FREE_HEAD:
            lost -= first
        self._next = last + 1
        self._lost += lost
        return numbers, lost


class _Wait:
    """Patience with a stream, which ends when nothing has come for so long."""

    def __init__(self, timeout: float) -> None:
        self._timeout = timeout
        self._deadline = time.monotonic() + timeout

    def goes_on(self, has_come: bool) -> bool:
        """Sleeps a little, unless something has come; false when it has ended."""
        now = time.monotonic()
        if has_come:
            self._deadline = now + self._timeout
            return True
        if now >= self._deadline:
            return False
        time.sleep(_POLL_SECONDS)
        return True
