#!/usr/bin/env bash
# scripts/random_hosts.sh [MINUTES] [PRESET]: hosts that call whatever comes to their mind, in every mode, from 1, 4, 8 and
# 16 threads, on the virtual box and on a recording, with seeds that were not used before, as many at a time as there
# are processors, for MINUTES (10 without any). A run that ends in any way but every call coming back keeps its output,
# and the script says how it is made again. What was run is added up over all runs of the script, by preset, in
# build/random-hosts/report.txt. Exits 0 when nothing was found.
set -euo pipefail

cd "$(dirname "$0")/.."
minutes=${1:-10}
preset=${2:-release}
if ! [[ $minutes =~ ^[0-9]+$ ]]; then
    echo "usage: scripts/random_hosts.sh [MINUTES] [PRESET]" >&2
    exit 2
fi
scripts/setup.sh "$preset"

folder=$PWD/build/random-hosts
mkdir -p "$folder"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "random_hosts: building (preset $preset)"
if ! { cmake --preset "$preset" && cmake --build --preset "$preset" --parallel "$(nproc)" --target random_host; } >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    echo "random_hosts: the build failed" >&2
    exit 1
fi

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
program=$PWD/build/$preset/random_host

# run_host SEED: which host that is follows from the seed. Adds a line to the list of runs: seed, calls, successes.
run_host() {
    local seed=$1 modes=(own usb pxi both) threads=(1 4 8 16) output=$folder/seed-$1.txt
    local arguments=(--mode "${modes[seed % 4]}" --threads "${threads[seed / 4 % 4]}" --seed "$seed" --calls 1000)
    if ((seed / 16 % 2 == 1)); then
        arguments+=(--simulation)
    fi
    # At fixed addresses, which the thread sanitizer needs.
    if setarch -R "$program" "${arguments[@]}" >/dev/null 2>"$output"; then
        sed -nE "s/^every call came back: ([0-9]+), of which ([0-9]+) .*/$seed \1 \2/p" "$output" >>"$folder/runs-$preset"
        rm -f "$output"
    else
        echo "random_hosts: FOUND: random_host ${arguments[*]} (preset $preset), output in ${output#"$PWD/"}"
    fi
}

# Behind the last seed of all runs so far.
touch "$folder/runs-$preset"
first=$(awk '$1 > last { last = $1 } END { print last + 1 }' "$folder"/runs-*)
begin=$SECONDS
run_in_turn() {
    local seed
    for ((seed = first + $1; SECONDS - begin < minutes * 60; seed += $(nproc))); do
        run_host "$seed"
    done
}
for ((lane = 0; lane < $(nproc); ++lane)); do
    run_in_turn "$lane" &
done | tee "$log"
echo "$preset $((SECONDS - begin))" >>"$folder/seconds"

{
    echo "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $(nproc) processors"
    for runs in "$folder"/runs-*; do
        name=${runs##*/runs-}
        seconds=$(awk -v preset="$name" '$1 == preset { sum += $2 } END { print sum }' "$folder/seconds")
        awk -v preset="$name" -v seconds="$seconds" '
            { calls += $2; successes += $3 }
            END { printf "%s: %d hosts, %d calls, of which %d did what they were asked for, in %.1f minutes\n",
                         preset, NR, calls, successes, seconds / 60 }' "$runs"
    done
} | tee "$folder/report.txt"
! grep -q FOUND "$log"
