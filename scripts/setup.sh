#!/usr/bin/env bash
# setup.sh [USE...]: installs the Debian packages that the uses take and that are missing here, and says beforehand how
# many they are and how large. A use is "demo" (scripts/demo.sh), the name of a preset, "tidy" (scripts/tidy.sh) or
# "format" (clang-format); without any it is all that scripts/test.sh takes without any. Uses sudo when not run as root.
# Does nothing when everything is there.
set -euo pipefail

# One line a package: its name, the needs that it serves, and what it is for. The build finds each by itself.
packages='
g++                         build   compiler
cmake                       build   build
ninja-build                 build   build
libcli11-dev                build   command lines of the programs in tools/
nlohmann-json3-dev          build   descriptions of recordings, which are JSON
libgtest-dev                tests   tests
libbenchmark-dev            tests   benchmarks
libfftw3-dev                tests   a Fourier transform to hold the own one of the self test against
python3-minimal             tests   a host in Python
libpython3-stdlib           tests   what that host loads the library with
dpkg-dev                    tests   Debian packages: finds out what they depend on
file                        tests   Debian packages: cpack asks it what to look at
pkg-config                  tests   a host that finds the library by it
python3-neo                 tests   reads recorded folders as tools for analysis do
python3-numpy               tests   what the Python package is made of, and what compares what is found in folders
python3-matplotlib          tests   pictures of the Python package
python3-pytest              tests   tests of the Python package
mypy                        tests   looks whether its type hints are right
libboost-dev                view    web server of orbe-view, of which the headers are taken
npm                         view    takes what the page of orbe-view is made of, by its sum
chromium                    browser shows the page of orbe-view to its tests
chromium-driver             browser lets them use it
python3-selenium            browser what they say that in
libvtk9-dev                 loguru  loguru, which Debian ships as part of VTK
g++-mingw-w64-x86-64-posix  windows compiler, in the flavour whose standard library has threads
googletest                  windows the sources of GoogleTest, which the tests are built with
wine                        windows runs the tests
wine64                      windows the part of Wine that runs 64-bit programs
clang                       windows compiles a host as the main compiler of Windows does, and shows the names it imports
lld                         windows links that host
llvm                        windows makes the import library that the host is linked with
clang                       fuzz    compiler
libclang-rt-14-dev          fuzz    run time of the fuzzers
python3-clang-14            mutation finds where defects can be put into the layers
clang-tidy                  tidy    looks at the sources
clang-format                format  formats the sources
'

fail() {
    echo "setup: $*" >&2
    exit 1
}

needs_of() {
    case $1 in
    demo) echo build ;;
    release) echo build tests view browser mutation ;;
    debug | tsan) echo build tests view ;;
    asan) echo build tests view loguru ;;
    windows) echo build view windows ;;
    fuzz | fuzz-fast) echo build tests fuzz ;;
    tidy) echo build tests view tidy ;;
    format) echo format ;;
    *) fail "unknown use: $1 (demo, release, debug, asan, tsan, windows, fuzz, fuzz-fast, tidy or format)" ;;
    esac
}

# npm also comes with packages of Node.js that are not Debian's.
is_installed() {
    [ "$1" = npm ] && command -v npm >/dev/null && return
    [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

page=$(dirname "$0")/../tools/orbe_view/page
# What npm has put beside the page is what its list of sums asks for. npm keeps such a list there as well.
has_page_libraries() {
    local sum
    while read -r sum; do
        grep -qF -- "$sum" "$page/node_modules/.package-lock.json" 2>/dev/null || return
    done < <(grep '"integrity"' "$page/package-lock.json")
}

# npm itself refuses what has another sum.
take_page_libraries() {
    case $needs in
    *" view "*) ;;
    *) return ;;
    esac
    has_page_libraries && return
    echo "setup: taking what the page of orbe-view is made of"
    (cd "$page" && npm ci --ignore-scripts --no-audit --no-fund --loglevel=error) ||
        fail "npm could not take what tools/orbe_view/page/package-lock.json names"
}

uses=("$@")
[ ${#uses[@]} -gt 0 ] || uses=(release asan tsan windows)
needs=" "
for use in "${uses[@]}"; do
    needs+="$(needs_of "$use") "
done

wanted=()
while read -r package need _; do
    case $needs in
    *" $need "*) [ -z "$package" ] || wanted+=("$package") ;;
    esac
done <<<"$packages"

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    fail "this is not a Debian system; install the equivalents of ${wanted[*]} and build by hand (see README.md)"
fi

missing=()
for package in "${wanted[@]}"; do
    is_installed "$package" || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
    take_page_libraries
    echo "setup: ${uses[*]}: complete"
    exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "${missing[*]} missing; run this as root or install sudo"
    as_root=(sudo)
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
apt_get() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive LC_ALL=C apt-get -o Acquire::Retries=3 \
        -o DPkg::Lock::Timeout=120 "$@" >"$log" 2>&1 </dev/null
}
install=(install --no-install-recommends "${missing[@]}")

# What apt-get would do: the last line of it that the pattern finds, as the replacement.
apt_get_says() {
    sed -nE "s/$1/$2/p" "$log" | tail -n 1
}

echo "setup: ${uses[*]}: missing ${missing[*]}"
if ! apt_get update; then
    # The package lists that are there may still do.
    echo "setup: apt-get update failed, going on with the package lists of this machine" >&2
    tail -n 5 "$log" >&2
fi
apt_get "${install[@]}" --print-uris || true # only says what it would do
count=$(apt_get_says '.* ([0-9]+) newly installed.*' '\1')
fetch=$(apt_get_says 'Need to get ([^ ]+ [kMG]?B).*' '\1')
disk=$(apt_get_says 'After this operation, ([^ ]+ [kMG]?B) of additional.*' '\1')
echo "setup: installing ${count:-?} packages: ${fetch:-?} to fetch, ${disk:-?} on disk"
if ! apt_get "${install[@]}" --yes; then
    tail -n 20 "$log" >&2
    fail "apt-get could not install ${missing[*]} (its last lines stand above)"
fi
for package in "${missing[@]}"; do
    is_installed "$package" || fail "apt-get reported success, yet $package is not installed"
done
take_page_libraries
