#!/usr/bin/env bash
# run_under_wine.sh PREFIX PROGRAM ARGUMENT...: runs a Windows program under Wine, without a display and without
# Wine's own messages, and exits with its status. PREFIX is the directory that Wine keeps its Windows in; it is
# made at first use. CMake calls this for every program that it builds for Windows.
set -euo pipefail

WINEPREFIX=$(realpath --no-symlinks "$1")
export WINEPREFIX
shift

# The loader of 64-bit programs; the command `wine` asks for the 32-bit one, which nothing here needs.
wine=$(command -v wine64 || true)
for candidate in /usr/lib/wine/wine64 "$(command -v wine || true)"; do
    [ -n "$wine" ] || [ ! -x "$candidate" ] || wine=$candidate
done
if [ -z "$wine" ]; then
    echo "run_under_wine: Wine is missing (Debian packages wine and wine64)" >&2
    exit 127
fi

export WINEDEBUG=-all
# Neither the .NET and HTML engines, which Wine would offer to download, nor entries in the desktop's menus.
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
unset DISPLAY WAYLAND_DISPLAY

# Tests run side by side, and only one of them may make the prefix.
ready=$WINEPREFIX/.orbe-ready
if [ ! -e "$ready" ]; then
    mkdir -p "$WINEPREFIX"
    (
        flock 9
        if [ ! -e "$ready" ]; then
            "$wine" wineboot --init </dev/null >/dev/null 2>&1
            touch "$ready"
        fi
    ) 9>"$WINEPREFIX.lock"
fi

exec "$wine" "$@"
