#!/usr/bin/env bash
# Shows the library at work without a box: builds it, makes a recording of five seconds of four probes and the RHD
# stream, plays it through the exported API in simulation mode, and compares what a host receives with what the
# recording holds. Exits with the status of the last play: 0 when every packet was as expected.
set -euo pipefail

cd "$(dirname "$0")/.."
scripts/setup.sh demo

# Whole blocks of 1,792 super frames reach a host; 84 of them are 5.02 s at 30,000 super frames a second.
blocks=84

scratch=
log=$(mktemp)
clean_up() {
    rm -f "$log"
    [ -z "$scratch" ] || rm -rf "$scratch"
}
trap clean_up EXIT

quietly() {
    if ! "$@" >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        echo "demo: $1 failed" >&2
        exit 1
    fi
}

echo "demo: building (preset demo)"
quietly cmake --preset demo
quietly cmake --build --preset demo --parallel "$(nproc)"

# Beside the build, because 630 MB are too much for a /tmp in memory.
scratch=$(mktemp -d build/demo/recording.XXXXXX)
recording=$scratch/recording.bin

echo "demo: making a recording of 5 s: four probes and the RHD stream"
build/demo/orbe-recording make "$recording" --blocks "$blocks"

# The recording plays at the box's pace, and a host's ADC queue holds 17 ms: a machine that is busy with something
# else can lose packets to that. The player says when it was so, and then, and only then, it may try again.
attempts=3
for ((attempt = 1; attempt <= attempts; attempt++)); do
    echo "demo: playing it through the API"
    status=0
    build/demo/orbe-play --verify "$recording" 2>"$log" || status=$?
    cat "$log" >&2
    if [ "$status" -ne 1 ] || ! grep -q 'too busy to play in real time' "$log"; then
        break
    fi
done
exit "$status"
