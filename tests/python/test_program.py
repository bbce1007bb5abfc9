"""``python3 -m orbe`` as users call it."""

import subprocess
import sys

import orbe


def run(*arguments):
    return subprocess.run([sys.executable, "-m", "orbe", *arguments], capture_output=True, text=True)


def test_info_tells_what_is_there(recordings):
    path = recordings.make("--seconds", "0.4", "--ports", "1", "--fault", "lost-row:1@195000+3250")
    ended = run("info", str(path))
    assert ended.returncode == 0 and ended.stderr == ""
    lines = ended.stdout.splitlines()
    assert lines[0] == f"{path}: raw, 0.400 s"
    assert lines[1] == "probe1.ap    12000 samples of 384 channels, 30000 Hz, gain 500, 50 lost in 1 gaps"
    assert lines[3].startswith("adc          11999 samples of 8 channels, 30000 Hz, 0 lost in 0 gaps")
    assert lines[4] == "178 rows of port 1 lost"


def test_overview_names_the_picture_that_it_writes(recordings, tmp_path):
    path = recordings.make("--seconds", "0.4", "--ports", "1", "--fault", "lost-row:1@195000+3250")
    ended = run("overview", str(path))
    assert ended.returncode == 0 and ended.stdout == f"{path.stem}_overview.png\n"
    assert (tmp_path / f"{path.stem}_overview.png").read_bytes().startswith(b"\x89PNG")


def test_failures_are_one_line_and_an_exit_code(tmp_path):
    (tmp_path / "text.bin").write_text("no recording at all\n" * 100)
    for arguments, message in (
        (("overview", "nowhere.bin"), "orbe: 'nowhere.bin' is not there\n"),
        (
            ("info", "text.bin"),
            "orbe: 'text.bin' is no raw recording of this box: of its first 125 rows 0 have the marker and a known "
            "stream id\n",
        ),
    ):
        ended = run(*arguments)
        assert ended.returncode == 1 and ended.stderr == message and ended.stdout == ""
    assert run("draw").returncode == 2 and run().returncode == 2
    assert run("--version").stdout == f"orbe {orbe.__version__}\n"
