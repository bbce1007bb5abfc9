#!/usr/bin/env bash
# Runs clang-tidy with .clang-tidy on the sources given, or on all sources of the library and the programs. Exits 0 when
# there is nothing to say.
set -euo pipefail

cd "$(dirname "$0")/.."
command -v clang-tidy >/dev/null || scripts/setup.sh tidy

# The commands that the sources are compiled with.
cmake --preset release >/dev/null
database=build/release

sources=("$@")
if [ ${#sources[@]} -eq 0 ]; then
    mapfile -t sources < <(find common Unified_PSB_Demux/src ORBE_Controller/src api tools -name '*.cpp' | sort)
fi
# Only what this platform compiles: the others are not in the database.
compiled=()
for source in "${sources[@]}"; do
    if grep -qF "\"file\": \"$PWD/$source\"" "$database/compile_commands.json"; then
        compiled+=("$source")
    fi
done
if [ ${#compiled[@]} -eq 0 ]; then
    echo "tidy: none of the sources is compiled here" >&2
    exit 1
fi

# clang-tidy counts the warnings that it suppresses in system headers; that line is of no use to anybody.
# shellcheck disable=SC2016 # expanded by the inner shell
printf '%s\0' "${compiled[@]}" | DATABASE=$database xargs -0 -n 1 -P "$(nproc)" bash -c '
    set -o pipefail
    clang-tidy -p "$DATABASE" --quiet "$0" 2>&1 | { grep -vE "^[0-9]+ warnings? generated\.$" || true; }'
echo "tidy: ${#compiled[@]} sources, nothing to say"
