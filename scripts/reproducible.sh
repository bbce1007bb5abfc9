#!/usr/bin/env bash
# reproducible.sh [--room ROOM] [PRESET]: builds the sources of this folder as they are twice, in folders of different
# names, at different times and in different time zones, packs both, and compares the packages byte for byte. Folders in
# a package have the default permissions of who packs, 022 here. With --room only the objects of that room are built and compared, which takes seconds. The
# preset is demo unless another one is named; tests and benchmarks are left out. Exits with 0 when all is the same.
set -euo pipefail

cd "$(dirname "$0")/.."
room=
if [ "${1:-}" = --room ]; then
    room=$2
    shift 2
fi
preset=${1:-demo}
export CCACHE_DISABLE=1
umask 022
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
log=$folder/log

# Of the last commit; a folder without git is dated by its youngest file.
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || stat -c %Y CMakeLists.txt)}
export SOURCE_DATE_EPOCH

# As they are now, whatever happens to them meanwhile: everything but what was built.
tar --create --exclude=./build --exclude=./.git --file "$folder/sources.tar" .

quietly() {
    if ! "$@" >"$log" 2>&1; then
        tail -n 40 "$log"
        echo "reproducible: failed: $*"
        exit 1
    fi
}

# make NAME: builds, and puts what is compared into the folder NAME.out.
make() {
    local sources=$folder/$1 build=$folder/$1/build/$preset out=$folder/out.${1%%/*}
    mkdir -p "$sources" "$out"
    tar --extract --touch --file "$folder/sources.tar" --directory "$sources"
    (
        cd "$sources"
        quietly cmake --preset "$preset" -DORBE_BUILD_TESTS=OFF -DORBE_BUILD_BENCHMARKS=OFF
        if [ -n "$room" ]; then
            quietly cmake --build "$build" --parallel 2 --target "orbe_$room"
            find "$build" -path "*/orbe_$room.dir/*.o*" -type f -exec cp {} "$out" \;
        else
            quietly cmake --build "$build" --parallel "$(nproc)"
            quietly cpack --config "$build/CPackConfig.cmake"
            find "$build/packages" -maxdepth 1 -type f -exec cp {} "$out" \;
        fi
    )
}

(
    export TZ=UTC LC_ALL=C
    make one
)
[ -n "$room" ] || sleep 2
(
    export TZ=Asia/Kathmandu LC_ALL=C.UTF-8
    make the/other/one-with-a-long-name
)

compared=0
different=0
for file in "$folder"/out.one/*; do
    name=${file##*/}
    compared=$((compared + 1))
    if ! cmp "$file" "$folder/out.the/$name"; then
        different=$((different + 1))
    elif [ -z "$room" ]; then
        (cd "$folder/out.one" && sha256sum "$name")
    fi
done
if [ "$(find "$folder/out.the" -type f | wc -l)" -ne "$compared" ]; then
    echo "reproducible: the second build made other files than the first"
    exit 1
fi
echo "reproducible: $compared files compared, $different different"
[ "$compared" -gt 0 ] && [ "$different" -eq 0 ]
