"""Recordings that the tests make with the programs of the build, each once a run."""

import os
import subprocess
from pathlib import Path

import pytest

PROGRAM = os.environ["ORBE_RECORDING_PROGRAM"]


class Recordings:
    """Makes raw recordings; the same arguments give the same file."""

    def __init__(self, folder: Path) -> None:
        self._folder = folder
        self._made: dict[tuple[str, ...], Path] = {}

    def make(self, *arguments: str) -> Path:
        if arguments not in self._made:
            path = self._folder / f"made-{len(self._made)}.bin"
            subprocess.run([PROGRAM, "make", str(path), *arguments], check=True, capture_output=True)
            self._made[arguments] = path
        return self._made[arguments]

    def calibration(self, folder: Path, serial_number: int) -> None:
        subprocess.run(
            [PROGRAM, "calibration", str(folder), "--serial", str(serial_number)], check=True, capture_output=True
        )


@pytest.fixture(scope="session")
def recordings(tmp_path_factory: pytest.TempPathFactory) -> Recordings:
    return Recordings(tmp_path_factory.mktemp("recordings"))


@pytest.fixture(autouse=True)
def _in_a_folder_of_its_own(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
