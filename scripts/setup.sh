#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running this project take and that are missing here.
# Uses sudo when not run as root. Does nothing when everything is there.
set -euo pipefail

# One line a need; the build finds each of them by itself.
packages=(
    g++             # compiler
    cmake           # build
    ninja-build     # build
    libvtk9-dev     # loguru, every log line: Debian ships it as part of VTK
    libcli11-dev    # command lines of the programs in tools/
    libgtest-dev    # tests
    libbenchmark-dev # benchmarks
    libfftw3-dev    # a Fourier transform to hold the self test's own against
    g++-mingw-w64-x86-64-posix # Windows DLL: compiler, in the flavour whose standard library has threads
    googletest      # Windows DLL: the sources of GoogleTest, which its tests are built with
    wine            # Windows DLL: runs its tests
    wine64          # Windows DLL: the part of Wine that runs 64-bit programs
    clang           # Windows DLL: compiles a host as Windows' main compiler does, and shows the names it imports
    lld             # Windows DLL: links that host
    llvm            # Windows DLL: makes the import library that the host is linked with
)

fail() {
    echo "setup: $*" >&2
    exit 1
}

is_installed() {
    [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    fail "this is not a Debian system; install the equivalents of ${packages[*]} and build by hand (see README.md)"
fi

missing=()
for package in "${packages[@]}"; do
    is_installed "$package" || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: complete"
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
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o Acquire::Retries=3 -o DPkg::Lock::Timeout=120 \
        "$@" >"$log" 2>&1 </dev/null
}

echo "setup: installing ${missing[*]}"
if ! apt_get update; then
    # The package lists that are there may still do.
    echo "setup: apt-get update failed, going on with the package lists of this machine" >&2
    tail -n 5 "$log" >&2
fi
if ! apt_get install --yes --no-install-recommends "${missing[@]}"; then
    tail -n 20 "$log" >&2
    fail "apt-get could not install ${missing[*]} (its last lines stand above)"
fi
for package in "${missing[@]}"; do
    is_installed "$package" || fail "apt-get reported success, yet $package is not installed"
done
