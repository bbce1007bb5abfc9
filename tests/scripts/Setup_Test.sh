#!/usr/bin/env bash
# Setup_Test.sh SCRIPT: what scripts/setup.sh asks apt for, shown with stand-ins for Debian's programs. Exits with 0 when
# all is as it should be.
set -euo pipefail

script=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/bin"

# The packages in the file `installed` are there.
cat >"$folder/bin/dpkg-query" <<'END'
#!/usr/bin/env bash
grep -qxF -- "${@: -1}" "$FOLDER/installed" && printf installed
END
# Writes down how it is called; installs what it is asked for, unless it is only to say what it would do.
cat >"$folder/bin/apt-get" <<'END'
#!/usr/bin/env bash
while [ "$1" = -o ]; do shift 2; done
echo "$*" >>"$FOLDER/calls"
case "$*" in
install*--print-uris)
    echo "0 upgraded, 52 newly installed, 0 to remove and 3 not upgraded."
    echo "Need to get 6550 kB/86.3 MB of archives."
    echo "After this operation, 344 MB of additional disk space will be used."
    ;;
install*)
    shift 2
    printf '%s\n' "$@" >>"$FOLDER/installed"
    ;;
esac
END
cat >"$folder/bin/sudo" <<'END'
#!/usr/bin/env bash
exec "$@"
END
chmod +x "$folder"/bin/*
export FOLDER=$folder PATH=$folder/bin:$PATH

failures=0
# expect STATUS OUTPUT CALLS USE...: runs the script once.
expect() {
    local status=$1 output=$2 calls=$3 got=0 text
    shift 3
    : >"$folder/calls"
    text=$("$script" "$@" 2>&1) || got=$?
    if [ "$got" -ne "$status" ] || [ "$text" != "$output" ] || [ "$(cat "$folder/calls")" != "$calls" ]; then
        printf 'setup.sh %s: status %s\n%s\ncalls:\n%s\n' "$*" "$got" "$text" "$(cat "$folder/calls")" >&2
        failures=$((failures + 1))
    fi
}

demo="g++ cmake ninja-build libcli11-dev nlohmann-json3-dev"
sizes="setup: installing 52 packages: 6550 kB to fetch, 344 MB on disk"
calls() {
    printf 'update\ninstall --no-install-recommends %s --print-uris\ninstall --no-install-recommends %s --yes' "$1" "$1"
}

echo git >"$folder/installed"
expect 0 "setup: demo: missing $demo
$sizes" "$(calls "$demo")" demo
expect 0 "setup: demo: complete" "" demo
printf '%s\n' g++ ninja-build nlohmann-json3-dev >"$folder/installed"
expect 0 "setup: demo: missing cmake libcli11-dev
$sizes" "$(calls "cmake libcli11-dev")" demo
expect 0 "setup: format: missing clang-format
$sizes" "$(calls clang-format)" format
expect 1 "setup: unknown use: demos (demo, release, debug, asan, tsan, windows, fuzz, fuzz-fast, tidy or format)" "" demos

# Without a use, everything that the four presets of scripts/test.sh take, and a use whose packages are there.
"$script" >/dev/null
: >"$folder/calls"
for use in "" demo release asan tsan windows; do
    expect 0 "setup: ${use:-release asan tsan windows}: complete" "" ${use:+"$use"}
done
# Each preset has a use.
for preset in $(sed -n 's/.*"configurePreset": "\([a-z-]*\)".*/\1/p' "$(dirname "$script")/../CMakePresets.json" | sort -u); do
    "$script" "$preset" >/dev/null || failures=$((failures + 1))
done

# What the page of orbe-view is made of: taken where it is missing or another one, and only for uses that build the
# page. In a tree of its own, whose npm is a stand-in.
mkdir -p "$folder/tree/scripts" "$folder/tree/tools/orbe_view/page"
page=$folder/tree/tools/orbe_view/page
cp "$script" "$folder/tree/scripts/setup.sh"
echo '"integrity": "sha512-one",' >"$page/package-lock.json"
cat >"$folder/bin/npm" <<'END'
#!/usr/bin/env bash
echo "npm $* in ${PWD##*/tree/}" >>"$FOLDER/calls"
[ ! -e "$FOLDER/npm_fails" ] || exit 1
mkdir -p node_modules
cp package-lock.json node_modules/.package-lock.json
END
chmod +x "$folder/bin/npm"
script=$folder/tree/scripts/setup.sh
taking="setup: taking what the page of orbe-view is made of"
npm_call="npm ci --ignore-scripts --no-audit --no-fund --loglevel=error in tools/orbe_view/page"
expect 0 "setup: demo: complete" "" demo
expect 0 "$taking
setup: tsan: complete" "$npm_call" tsan
expect 0 "setup: tsan: complete" "" tsan
echo '"integrity": "sha512-two",' >"$page/package-lock.json"
expect 0 "$taking
setup: release: complete" "$npm_call" release
echo '"integrity": "sha512-three",' >"$page/package-lock.json"
touch "$folder/npm_fails"
expect 1 "$taking
setup: npm could not take what tools/orbe_view/page/package-lock.json names" "$npm_call" release
[ "$failures" -eq 0 ]
