#!/usr/bin/env bash
# Run_Under_Wine_Test.sh SCRIPT: what scripts/run_under_wine.sh makes of the ways in which a program ends, shown with a
# stand-in for Wine. Exits with 0 when all is as it should be.
set -euo pipefail

script=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

mkdir -p "$folder/bin" "$folder/prefix/.locks"
# As if services were running, so that none are started.
exec 5>>"$folder/prefix/.locks/services"
flock 5

# The stand-in counts its calls and does in the n-th what line n of the file `plan` says.
cat >"$folder/bin/wine64" <<'END'
#!/usr/bin/env bash
echo "call $*" >>"$FOLDER/calls"
eval "$(sed -n "$(wc -l <"$FOLDER/calls")p" "$FOLDER/plan")"
END
# The system's own, or one that is forbidden to do anything.
cat >"$folder/bin/setarch" <<'END'
#!/usr/bin/env bash
[ "$ADDRESSES" = fixed ] || exit 1
[ "$1" = -R ] || exit 2
echo fixed >>"$FOLDER/fixed"
shift
exec "$@"
END
chmod +x "$folder/bin/wine64" "$folder/bin/setarch"
export FOLDER=$folder PATH=$folder/bin:$PATH

failures=0
# expect NAME ADDRESSES STATUS CALLS OUTPUT PLAN...: runs a program once.
expect() {
    local name=$1 addresses=$2 status=$3 calls=$4 output=$5 got=0 text
    shift 5
    printf '%s\n' "$@" >"$folder/plan"
    : >"$folder/calls"
    : >"$folder/fixed"
    text=$(ADDRESSES=$addresses timeout 30 "$script" "$folder/prefix" program.exe one 'two words' 2>&1) || got=$?
    if [ "$got" -ne "$status" ] || [ "$(grep -c '^call program.exe one two words$' "$folder/calls")" -ne "$calls" ] ||
        [ "$text" != "$output" ]; then
        echo "$name: status $got, output \"$text\", calls:" >&2
        cat "$folder/calls" >&2
        failures=$((failures + 1))
    fi
}

not_started='echo "err:virtual:virtual_alloc_first_teb wine: failed to map the shared user data: c0000018" >&2; exit 1'

expect "a program that is good" fixed 0 1 good 'echo good'
[ -s "$folder/fixed" ] || {
    echo "the addresses were not fixed" >&2
    failures=$((failures + 1))
}
expect "a program that fails" fixed 1 1 bad 'echo bad; exit 1' 'echo good'
expect "addresses at random" random 0 1 good 'echo good'
expect "a failure with addresses at random" random 1 1 bad 'echo bad >&2; exit 1' 'echo good'
expect "a failure without a word" random 1 1 "" 'exit 1' 'echo good'
never=()
for _ in {1..25}; do
    never+=("$not_started")
done
expect "starts that never succeed" random 1 20 \
    "err:virtual:virtual_alloc_first_teb wine: failed to map the shared user data: c0000018" "${never[@]}"
expect "a program that leaves another one behind" random 0 1 good 'sleep 60 >/dev/null & echo good'
expect "a crash" random 139 1 "" 'exit 139' 'echo good'
expect "a program that was not started" random 3 2 bad "$not_started" 'echo bad; exit 3' 'echo good'
expect "a program that was not started twice" random 0 3 good "$not_started" "$not_started" 'echo good'
[ "$failures" -eq 0 ]
