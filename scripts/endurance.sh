#!/usr/bin/env bash
# scripts/endurance.sh [HOURS]: the exported functions for HOURS of box time in every mode (24 without any), as fast as
# the machine goes, with every sample compared and the process watched. The host mode plays recordings in real time only:
# there it is a hundredth of HOURS. The reports are in build/endurance/. Exits 0 when all was well in every mode.
set -euo pipefail

cd "$(dirname "$0")/.."
hours=${1:-24}
if ! [[ $hours =~ ^[0-9]+(\.[0-9]+)?$ ]]; then
    echo "usage: scripts/endurance.sh [HOURS]" >&2
    exit 2
fi
scripts/setup.sh release

reports=$PWD/build/endurance
mkdir -p "$reports"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "endurance: building (preset release)"
if ! { cmake --preset release && cmake --build --preset release --parallel "$(nproc)" --target endurance; } >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    echo "endurance: the build failed" >&2
    exit 1
fi

failed=0
# run_mode MODE HOURS: a recording that it makes lies beside the build, where there is room.
run_mode() {
    echo "endurance: $1, $2 hours of box time"
    TMPDIR=$reports build/release/endurance --mode "$1" --hours "$2" 2>"$reports/$1-errors.txt" |
        tee "$reports/$1.txt" || failed=1
}

run_mode host-box "$hours"
run_mode own-box "$hours"
run_mode own-simulation "$hours"
run_mode host-simulation "$(awk -v hours="$hours" 'BEGIN { print hours / 100 }')"

echo
tail -qn 3 "$reports"/{host-box,own-box,own-simulation,host-simulation}.txt
exit "$failed"
