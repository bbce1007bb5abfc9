#!/usr/bin/env bash
# scripts/endurance.sh [HOURS [MODE...]]: the exported functions for HOURS of box time (24 without any) in the modes that
# are named, or in all of them, as fast as the machine goes, with every sample compared and the process watched. The
# reports are in build/endurance/. Exits 0 when all was well.
set -euo pipefail

cd "$(dirname "$0")/.."
hours=${1:-24}
modes=("${@:2}")
[ ${#modes[@]} -gt 0 ] || modes=(host-box host-simulation own-box own-simulation)
if ! [[ $hours =~ ^[0-9]+(\.[0-9]+)?$ ]]; then
    echo "usage: scripts/endurance.sh [HOURS [MODE...]]" >&2
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
for mode in "${modes[@]}"; do
    echo "endurance: $mode, $hours hours of box time"
    # A recording that it makes lies beside the build, where there is room.
    TMPDIR=$reports build/release/endurance --mode "$mode" --hours "$hours" 2>"$reports/$mode-errors.txt" |
        tee "$reports/$mode.txt" || failed=1
done

echo
for mode in "${modes[@]}"; do
    tail -n 3 "$reports/$mode.txt"
done
exit "$failed"
