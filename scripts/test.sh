#!/usr/bin/env bash
# Builds and runs every test: in the presets given as arguments, or in release, asan, tsan and windows without any;
# after release and windows it packs the library and builds and runs hosts that take it in as hosts do.
# Shows ctest's own output of every run. The last line reads "N passed, N failed" and sums what ctest counted
# in all runs; a build that fails and a run without a test count as one failure each. Exits 0 when none failed.
set -euo pipefail

cd "$(dirname "$0")/.."
presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(release asan tsan windows)
scripts/setup.sh "${presets[@]}"

jobs=$(nproc)
passed=0
failed=0
failures=()
log=$(mktemp)
trap 'rm -f "$log"' EXIT

# The sanitizers of GCC 12 cannot place their shadow memory where a kernel spreads addresses over more than
# 28 bits; without address randomisation they always can.
fixed_addresses=()
if [ "$(cat /proc/sys/vm/mmap_rnd_bits 2>/dev/null || echo 0)" -gt 28 ] && setarch -R true 2>/dev/null; then
    fixed_addresses=(setarch -R)
fi

# count_failure WHAT: one more failure, which is named again at the end of the run.
count_failure() {
    failures+=("$1")
    failed=$((failed + 1))
}

# quietly STEP COMMAND...: runs the command and shows its output only when it fails.
quietly() {
    local step=$1
    shift
    if ! "${fixed_addresses[@]}" "$@" >"$log" 2>&1; then
        tail -n 60 "$log"
        echo "test: $step FAILED"
        count_failure "$step"
        return 1
    fi
}

# run_ctest NAME ARGUMENT...: runs ctest and adds what its report says to the totals. Whatever is not reported
# as run and passed (failed, timed out, not built, skipped, disabled) is a failure.
run_ctest() {
    local name=$1 report status=0 total good test
    shift
    report=$PWD/build/test-report-$name.xml
    rm -f "$report"
    # Most tests wait more than they compute.
    "${fixed_addresses[@]}" ctest "$@" --parallel $((jobs + 1)) --output-junit "$report" || status=$?
    total=$(grep -c '^[[:space:]]*<testcase ' "$report" 2>/dev/null) || true
    good=$(grep -c '^[[:space:]]*<testcase .* status="run"' "$report" 2>/dev/null) || true
    total=${total:-0}
    good=${good:-0}
    passed=$((passed + good))
    while read -r test; do
        count_failure "$name: $test"
    done < <(sed -n '/^[[:space:]]*<testcase /{/ status="run"/!s/.* name="\([^"]*\)".*/\1/p}' "$report" 2>/dev/null)
    if [ "$total" -eq 0 ]; then
        echo "test: no test ran in $name"
        count_failure "$name: no test"
    elif [ "$status" -ne 0 ] && [ "$total" -eq "$good" ]; then
        echo "test: ctest ended with status $status in $name"
        count_failure "$name: ctest"
    fi
}

# Answers whether the preset could be built.
run_preset() {
    local preset=$1 begin=$SECONDS
    echo "test: preset $preset: building"
    quietly "configuring preset $preset" cmake --preset "$preset" || return
    quietly "building preset $preset" cmake --build --preset "$preset" --parallel "$jobs" || return
    echo "test: preset $preset: built in $((SECONDS - begin)) s, running the tests"
    run_ctest "$preset" --preset "$preset"
    echo "test: preset $preset: $((SECONDS - begin)) s in all"
}

# pack PRESET PATTERN: packs the library and unpacks the archive of that name; its root is then `package`.
pack() {
    local preset=$1 pattern=$2 packages=$PWD/build/$1/packages archive
    local unpacked=$packages/unpacked
    echo "test: packing preset $preset"
    rm -rf "$packages"
    quietly "packing" cpack --config "build/$preset/CPackConfig.cmake" || return
    mkdir -p "$unpacked"
    archive=$(find "$packages" -maxdepth 1 -name "$pattern")
    quietly "unpacking" cmake -E chdir "$unpacked" cmake -E tar xf "$archive" || return
    package=$(echo "$unpacked"/*)
}

# run_consumer PRESET WAY OPTION...: the library as others get it. The options configure the host.
run_consumer() {
    local name=$1-$2 way=$2 build=$PWD/build/consumer-$1-$2
    shift 2
    echo "test: consumer of preset ${name%-"$way"} by $way"
    rm -rf "$build"
    quietly "configuring the consumer" cmake -S tests/consumer -B "$build" -G Ninja -DWAY="$way" "$@" || return 0
    quietly "building the consumer" cmake --build "$build" --parallel "$jobs" || return 0
    run_ctest "consumer-$name" --test-dir "$build" --output-on-failure
}

for preset in "${presets[@]}"; do
    run_preset "$preset" || continue
    case $preset in
    release)
        if pack release 'neuropixapi-orbe-*.tar.gz'; then
            run_consumer release find_package -DCMAKE_PREFIX_PATH="$package"
            PKG_CONFIG_PATH=$package/lib/pkgconfig run_consumer release pkg-config \
                -DCMAKE_BUILD_RPATH="$package/lib"
            run_consumer release debian -DPACKAGES="$PWD/build/release/packages"
        fi
        run_consumer release subdirectory -DLIBRARY_SOURCES="$PWD" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
        ;;
    windows)
        if pack windows 'neuropixapi-orbe-*.zip'; then
            run_consumer windows find_package --toolchain "$PWD/cmake/toolchains/mingw-w64-x86_64.cmake" \
                -DCMAKE_PREFIX_PATH="$package" -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH
        fi
        ;;
    esac
done

[ ${#failures[@]} -eq 0 ] || printf 'test: FAILED: %s\n' "${failures[@]}"
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
