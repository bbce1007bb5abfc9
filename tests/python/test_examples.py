"""The examples of the documentation run as they stand there, one after the other in one folder."""

import os
import re
import subprocess
import sys
from pathlib import Path

import pytest

SOURCES = Path(os.environ["ORBE_SOURCES"])
BUILD = Path(os.environ["ORBE_RECORDING_PROGRAM"]).parent


def examples_of(page: Path, heading: str = "") -> list[tuple[str, str]]:
    """Language and text of the fenced blocks below a heading, or of a whole page."""
    text = page.read_text(encoding="utf-8")
    if heading:
        text = text[text.index(heading) :]
        text = re.split(r"\n#+ ", text, maxsplit=1)[0]
    return re.findall(r"```(python|sh)\n(.*?)```", text, flags=re.DOTALL)


def run_all(examples: list[tuple[str, str]]) -> None:
    names: dict[str, object] = {}
    # The Python of the tests, whichever comes first elsewhere.
    environment = {**os.environ, "PATH": f"{BUILD}:{Path(sys.executable).parent}:{os.environ['PATH']}"}
    for language, text in examples:
        if language == "sh":
            subprocess.run(["bash", "-euc", text], check=True, env=environment)
        else:
            exec(compile(text, "example", "exec"), names)


def test_the_examples_of_the_page_about_python_run(capsys: pytest.CaptureFixture[str], tmp_path: Path) -> None:
    examples = examples_of(SOURCES / "docs/python.md")
    assert len(examples) == 6
    run_all(examples)
    printed = capsys.readouterr().out
    assert "at port 1" in printed and "0.5 s: 3000 samples, RMS " in printed and "0 lost in all" in printed
    assert "nothing is damaged" in printed
    for picture in ("spikes.png", "traces.png", "spectrum.pdf", "rms.png", "page.pdf"):
        assert (tmp_path / picture).stat().st_size > 10_000


@pytest.fixture
def checkout(tmp_path: Path) -> Path:
    """A folder that looks like a checkout that has been built."""
    (tmp_path / "python").symlink_to(SOURCES / "python")
    (tmp_path / "build").mkdir()
    (tmp_path / "build/release").symlink_to(BUILD)
    return tmp_path


def test_the_example_of_the_readme_runs(capsys: pytest.CaptureFixture[str], checkout: Path) -> None:
    examples = examples_of(SOURCES / "README.md", "### Python")
    assert [language for language, _ in examples] == ["sh", "python"]
    run_all(examples)
    assert (checkout / "spikes.png").stat().st_size > 10_000
    assert "0.5 s: " in capsys.readouterr().out


def test_the_readme_gets_from_the_box_to_a_picture(checkout: Path) -> None:
    examples = examples_of(SOURCES / "README.md", "### From the box to a picture")
    assert len(examples) == 1
    run_all(examples)
    assert (checkout / "monday.png").stat().st_size > 10_000
