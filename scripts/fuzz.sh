#!/usr/bin/env bash
# scripts/fuzz.sh [MINUTES] [TARGET[=SHARE]...]: lets the fuzzers look for new inputs for MINUTES in all (60 without any),
# on all processors, one target after the other: those that are named, by their shares (1 without one), or all. A fifth of
# each target's time is spent under the address and undefined-behaviour sanitizers (preset fuzz), the rest without them
# (preset fuzz-fast), where executions are many times as many. The inputs that were found are kept in build/fuzz-corpus/,
# the counts of all runs in build/fuzz-report/: report.txt is the table, runs.txt has a line for each run of a target.
# Stops at the first finding and says which input it was. Exits 0 when there was none.
set -euo pipefail

cd "$(dirname "$0")/.."
usage() {
    echo "usage: scripts/fuzz.sh [MINUTES] [TARGET[=SHARE]...]" >&2
    exit 2
}
minutes=60
if [ $# -gt 0 ] && [[ $1 =~ ^[0-9]+$ ]]; then
    minutes=$1
    shift
fi

declare -A share=()
names=()
for argument in "$@"; do
    name=${argument%%=*}
    [ -d "tests/fuzz/corpus/$name" ] || { echo "fuzz: there is no target '$name'" >&2 && usage; }
    share[$name]=1
    [ "$name" = "$argument" ] || share[$name]=${argument#*=}
    [[ ${share[$name]} =~ ^[1-9][0-9]*$ ]] || usage
    names+=("$name")
done
if [ ${#names[@]} -eq 0 ]; then
    for corpus in tests/fuzz/corpus/*/; do
        name=$(basename "$corpus")
        share[$name]=1
        names+=("$name")
    done
fi
shares=0
for name in "${names[@]}"; do
    shares=$((shares + share[$name]))
done

scripts/setup.sh fuzz
report=$PWD/build/fuzz-report
mkdir -p "$report"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
for preset in fuzz fuzz-fast; do
    echo "fuzz: building (preset $preset)"
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" --parallel "$(nproc)"; } >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        echo "fuzz: the build failed" >&2
        exit 1
    fi
done

# The addresses of some systems are more random than the sanitizers' run time can take.
in_place=()
if setarch -R true 2>/dev/null; then
    in_place=(setarch -R)
fi
processor=$(awk -F ': ' '/^model name/ { print $2; exit }' /proc/cpuinfo)

# A long input of these costs many times what a short one does and shows little more.
longest_input() {
    case $1 in
    data_road) echo 256 ;;
    row_demux) echo 512 ;;
    *) echo 4096 ;;
    esac
}

# run PRESET TARGET SECONDS: on all processors; adds what was executed to the counts. False at a finding.
run() {
    local preset=$1 name=$2 seconds=$3
    local corpus=$PWD/build/fuzz-corpus/$name committed=$PWD/tests/fuzz/corpus/$name program=$PWD/build/$preset/fuzz_$name
    local place=$PWD/build/fuzz-runs/$preset/$name
    mkdir -p "$corpus"
    rm -rf "$place"
    local started=$SECONDS process processes=() failed=0
    for ((process = 0; process < $(nproc); process++)); do
        mkdir -p "$place/$process"
        (
            cd "$place/$process"
            TIMEFORMAT='processor seconds: %U %S'
            time "${in_place[@]}" "$program" "$corpus" "$committed" \
                -max_total_time="$seconds" -max_len="$(longest_input "$name")" -timeout=60 -entropic=0 \
                -print_final_stats=1 -artifact_prefix="$report/$name-"
        ) >"$place/$process/log.txt" 2>&1 &
        processes+=($!)
    done
    for process in "${processes[@]}"; do
        wait "$process" || failed=1
    done
    local counts
    counts=$(awk '/^stat::number_of_executed_units:/ { executions += $2 }
                  /^processor seconds:/ { seconds += $3 + $4 }
                  END { printf "%d %.1f", executions, seconds }' "$place"/*/log.txt)
    echo "$(date -u +%Y-%m-%dT%H:%M:%SZ) $preset $name $counts $((SECONDS - started)) $failed $processor" >>"$report/runs.txt"
    if [ "$failed" -ne 0 ]; then
        echo "fuzz: $name (preset $preset) found something:" >&2
        grep -hE 'mismatch:|ERROR:|runtime error:|Test unit written' "$place"/*/log.txt >&2 || tail -n 20 "$place"/*/log.txt >&2
        return 1
    fi
}

# From the lines of all runs.
write_report() {
    {
        echo "Executions of all runs of scripts/fuzz.sh on: $(cut -d ' ' -f 8- "$report/runs.txt" | sort -u | paste -sd ';')"
        echo "Processor hours are what the processes got of the processors, hours what the clock showed. Executions a second"
        echo "are those of a second of processor time. Findings are runs that stopped at one."
        echo
        printf '%-18s %-10s %15s %10s %15s %13s %9s\n' target preset executions hours 'processor hours' 'executions/s' findings
        awk 'function add(key) { count[key] += $4; processor[key] += $5; clock[key] += $6; found[key] += $7 }
             { add($3 " " $2); add("all " $2); add("all all") }
             END { for (key in count) {
                       split(key, part, " ")
                       printf "%-18s %-10s %15d %10.2f %15.3f %13.0f %9d\n", part[1], part[2], count[key], clock[key] / 3600,
                           processor[key] / 3600, processor[key] ? count[key] / processor[key] : 0, found[key] } }' \
            "$report/runs.txt" | LC_ALL=C sort -k1,1 -k2,2 | awk '$1 == "all" { all = all $0 "\n"; next } { print } END { printf "%s", all }'
    } >"$report/report.txt"
}

failed=0
for name in "${names[@]}"; do
    seconds=$((minutes * 60 * share[$name] / shares))
    sanitized=$((seconds / 5 > 0 ? seconds / 5 : 1))
    echo "fuzz: $name for $seconds s"
    run fuzz "$name" "$sanitized" && run fuzz-fast "$name" "$((seconds - sanitized > 0 ? seconds - sanitized : 1))" || failed=1
    write_report
    [ "$failed" -eq 0 ] || break
done

echo
cat "$report/report.txt"
exit "$failed"
