"""Where the library is looked for, and what is said of what is there instead."""

import os
import shutil
import subprocess
import sys
from pathlib import Path

import orbe
import pytest
from orbe import _library

PACKAGE = Path(orbe.__file__).parent


def test_what_the_variable_names_comes_first(tmp_path, monkeypatch):
    library = tmp_path / "any.so"
    library.touch()
    monkeypatch.setenv("ORBE_LIBRARY", "any.so")
    assert _library.find() == str(library)
    monkeypatch.setenv("ORBE_LIBRARY", "none.so")
    with pytest.raises(orbe.LibraryError, match="ORBE_LIBRARY names 'none.so', which is no file"):
        _library.find()


@pytest.mark.parametrize("place", ["lib", "lib/x86_64-linux-gnu", "lib/python3/dist-packages/orbe"])
def test_an_installed_package_finds_the_library_of_its_prefix(tmp_path, place):
    installed = tmp_path / "prefix/lib/python3/dist-packages"
    shutil.copytree(PACKAGE, installed / "orbe")
    library = tmp_path / "prefix" / place / "libNeuropixAPI.so"
    library.parent.mkdir(parents=True, exist_ok=True)
    library.touch()
    program = "from orbe import _library; print(_library.find())"
    environment = {key: value for key, value in os.environ.items() if key != "ORBE_LIBRARY"}
    environment["PYTHONPATH"] = str(installed)
    ended = subprocess.run(
        [sys.executable, "-c", program], check=True, capture_output=True, text=True, env=environment
    )
    assert ended.stdout == f"{library}\n"


def test_else_the_system_knows_it(monkeypatch):
    monkeypatch.delenv("ORBE_LIBRARY")
    monkeypatch.setattr(_library, "_folders_around", lambda package: iter(()))
    assert _library.find() == "libNeuropixAPI.so"


def test_what_is_not_this_library_is_told(tmp_path):
    with pytest.raises(orbe.LibraryError, match="cannot be loaded: .*libnowhere.so"):
        _library.Library("libnowhere.so")
    (tmp_path / "text.so").write_text("no library")
    with pytest.raises(orbe.LibraryError, match="cannot be loaded: .*text.so"):
        _library.Library(str(tmp_path / "text.so"))
    with pytest.raises(orbe.LibraryError, match="'libc.so.6' is not this library: it has no function np_getDeviceList"):
        _library.Library("libc.so.6")


def test_the_package_has_the_version_of_the_project():
    assert orbe.__version__ == os.environ["ORBE_VERSION"]
