#!/usr/bin/env bash
# run_under_wine.sh PREFIX PROGRAM ARGUMENT...: runs a Windows program under Wine, without a display and without
# Wine's own messages, and exits with its status. PREFIX is the directory that Wine keeps its Windows in; it is
# made at first use. CMake calls this for every program that it builds for Windows.
#
# Wine starts its services with the first program and ends them with the last one. Starting them takes longer than
# most tests, and whoever reads the first program's output waits for them as well, because they inherit it. So a
# program without output is run first, which keeps them; it ends by itself some seconds after the last call of this
# script.
set -euo pipefail

idle_seconds=15

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
# In the bare locale Wine could not make the files whose names hold more than ASCII, as Windows can.
export LC_ALL=C.UTF-8

# Wine needs one page at a fixed address, 0x7ffe0000, and the kernel places the heap of Wine's loader at random within the
# gigabyte around it: one program in some 8,000 finds its page taken and ends before it has begun, with status 1 and
# without a word. Without randomisation the heap always lies in the same place, below that page.
fixed_addresses=
if setarch -R true 2>/dev/null; then
    fixed_addresses='setarch -R'
fi

# Containers may forbid that. Then this one ending is recognised by what Wine can say of it, and the program, of which
# nothing has run, is started again. Everything else counts, whatever the program has ended with.
run_wine() {
    if [ -n "$fixed_addresses" ]; then
        $fixed_addresses "$wine" "$@"
        return
    fi
    # shellcheck disable=SC2034 # counts only
    local errors status start
    errors=$(mktemp)
    for start in {1..20}; do # what fails so often fails for good
        status=0
        # A file, because Wine's services hold on to what the first program writes to.
        WINEDEBUG=-all,err+virtual "$wine" "$@" 2>"$errors" || status=$?
        if [ "$status" -ne 1 ] ||
            ! grep -q 'virtual_alloc_first_teb wine: failed to map the shared user data' "$errors"; then
            break
        fi
    done
    cat "$errors" >&2
    rm -f "$errors"
    return "$status"
}

# Three locks keep the calls, which come side by side, out of each other's way: `starting` is held by the one call
# that looks whether the services run, `services` by whoever keeps them, and `calls` by every call for as long as its
# program runs.
locks=$WINEPREFIX/.locks
last_call=$locks/last-call

# Keeps the services up until no call is running and none has come for a while: a command interpreter reads nothing
# for so long. Holds all calls up while they end, because a program that starts in that moment would fail.
# Runs detached, with the lock `services` as descriptor 9.
keep_services() {
    exec 7>>"$locks/calls"
    while [ $(($(date +%s) - $(stat --format=%Y "$last_call"))) -lt "$idle_seconds" ] ||
        ! flock --nonblock 7; do
        sleep 1
    done | run_wine cmd 7>&- 9>&-
    wineserver --wait 7>&- 9>&- || true
    # In this order: who may call again must not take the services for up.
    exec 9>&-
    exec 7>&-
}

mkdir -p "$locks"
exec 7>>"$locks/calls" 8>>"$locks/starting" 9>>"$locks/services"
flock 8
flock --shared 7
touch "$last_call"
if flock --nonblock 9; then
    if [ ! -e "$locks/prefix-complete" ]; then
        run_wine wineboot --init </dev/null >/dev/null 2>&1 7>&- 8>&- 9>&-
        # What has made the prefix ends first: services that begin meanwhile get a second service manager, and
        # the two answer each other's calls.
        wineserver --wait 7>&- 8>&- 9>&- || true
        touch "$locks/prefix-complete" "$last_call"
    fi
    export fixed_addresses wine locks last_call idle_seconds
    export -f run_wine keep_services
    setsid bash -c keep_services </dev/null >/dev/null 2>&1 7>&- 8>&- &
    run_wine cmd /c exit </dev/null >/dev/null 2>&1 7>&- 8>&- 9>&-
fi
exec 8>&- 9>&-

if [ -n "$fixed_addresses" ]; then
    exec $fixed_addresses "$wine" "$@"
fi
run_wine "$@"
