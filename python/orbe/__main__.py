"""``python3 -m orbe``: what a recording holds, and a picture of it."""

from __future__ import annotations

import argparse
import sys
from typing import Optional, Sequence

from orbe import __version__
from orbe._load import load
from orbe.errors import OrbeError
from orbe.raw_file import RawFile
from orbe.recording import Recording

_DONE, _FAILED, _INTERRUPTED = 0, 1, 130


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Runs a command; answers the exit code: 0 done, 1 failed, 2 wrong arguments, 130 stopped by the user."""
    parsed = _parser().parse_args(arguments)
    try:
        with load(parsed.recording) as recording:
            _look_through(recording)
            parsed.command(recording, parsed)
    except OrbeError as error:
        print(f"orbe: {error}", file=sys.stderr)
        return _FAILED
    except KeyboardInterrupt:
        return _INTERRUPTED
    return _DONE


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="orbe",
        description="Looks into recordings of the ORBE acquisition box.",
        epilog="Exit codes: 0 done, 1 failed, 2 wrong arguments, 130 stopped by the user.",
    )
    parser.add_argument("--version", action="version", version=f"orbe {__version__}")
    commands = parser.add_subparsers(required=True, metavar="COMMAND")
    overview = commands.add_parser("overview", help="draw a page: traces, spectra, RMS along the probes, losses")
    overview.add_argument("recording", metavar="RECORDING", help="a recorded folder, or a raw file")
    overview.add_argument(
        "-o", "--output", metavar="FILE", help="ends in .png, .pdf or .svg (default: RECORDING_overview.png)"
    )
    overview.add_argument(
        "--at", type=float, metavar="SECONDS", help="where signals are drawn (default: in the middle)"
    )
    overview.set_defaults(command=_overview)
    info = commands.add_parser("info", help="print streams, gains and losses")
    info.add_argument("recording", metavar="RECORDING", help="a recorded folder, or a raw file")
    info.set_defaults(command=_info)
    return parser


def _overview(recording: Recording, parsed: argparse.Namespace) -> None:
    from orbe.plot import save_overview

    print(save_overview(recording, parsed.output, parsed.at))


def _info(recording: Recording, _: argparse.Namespace) -> None:
    print(f"{recording.path}: {recording.format}, {recording.duration:.3f} s")
    if recording.start_time is not None:
        print(f"started {recording.start_time:%Y-%m-%d %H:%M:%S} UTC")
    for stream in recording:
        gains = stream.info.gains
        gain = "" if gains is None else f", gain {gains.min():g}" + ("" if gains.min() == gains.max() else " and more")
        print(
            f"{stream.name:12} {len(stream)} samples of {stream.channel_count} channels, {stream.rate:g} Hz{gain}, "
            f"{stream.lost_samples} lost in {len(stream.gaps)} gaps"
        )
    if isinstance(recording, RawFile):
        print(recording.damage)
    if not recording.is_described:
        print("gains and electrodes are assumed: there is no orbe_recording.json beside the file")


def _look_through(recording: Recording) -> None:
    """A large raw file takes a while: a person sees how far it is."""
    if not isinstance(recording, RawFile):
        return
    if not sys.stderr.isatty():
        recording.index()
        return
    recording.index(lambda done, whole: print(f"\rlooking through: {done / whole:4.0%}", end="", file=sys.stderr))
    print("\r\x1b[K", end="", file=sys.stderr)


if __name__ == "__main__":
    sys.exit(main())
