#!/usr/bin/env bash
# Runs Windows programs of a cross build with Wine, away from the user's own Wine.
#
#   scripts/wine.sh FOLDER PROGRAM [ARGUMENT...]   run a program
#   scripts/wine.sh FOLDER start                   create the Wine folder and keep its server running
#   scripts/wine.sh FOLDER stop                    end everything that runs in it
#
# FOLDER holds the drives and the registry, and is created if missing. Without Wine the script only
# exits with status 77.
set -euo pipefail

readonly no_wine_status=77
readonly server_patience=60 # seconds without a program after which the server ends by itself

# Debian installs the programs of its 64-bit package outside the path.
find_program() {
    local candidate
    for candidate in "$@"; do
        if command -v "$candidate"; then
            return
        fi
    done
    printf 'wine.sh: no Wine on this machine\n' >&2
    exit "$no_wine_status"
}
wine="$(find_program wine64 wine /usr/lib/wine/wine64 /usr/lib/wine/wine)"
wineserver="$(find_program wineserver /usr/lib/wine/wineserver64 /usr/lib/wine/wineserver)"

mkdir -p "$1"
WINEPREFIX="$(cd "$1" && pwd)"
export WINEPREFIX
export WINEDEBUG=-all
# No debugger window after a crash, no download of the runtimes for .NET and HTML, and no entries in the
# user's menus.
export WINEDLLOVERRIDES="winedbg.exe=d;mscoree=d;mshtml=d;winemenubuilder.exe=d"
export HOME="$WINEPREFIX"
unset DISPLAY WAYLAND_DISPLAY
shift

# With the null driver, windows exist and receive messages without a display.
make_folder() {
    local made="$WINEPREFIX/made"
    [[ ! -e "$made" ]] || return 0
    "$wine" wineboot --init
    "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f
    "$wineserver" --kill || true
    "$wineserver" --wait
    touch "$made"
}

# The environment of all programs in the folder, if the build defines one.
set_environment() {
    local file="$WINEPREFIX/environment.reg"
    [[ ! -e "$file" ]] || "$wine" reg import "Z:$file"
}

case "$1" in
start)
    # The server keeps running and must not keep the caller's output open.
    exec >"$WINEPREFIX/start.log" 2>&1 </dev/null
    make_folder
    # Otherwise the server ends with each program, and the next one waits until it has started again. A
    # server that is already running will do.
    "$wineserver" --persistent="$server_patience" || true
    set_environment
    "$wine" cmd /c exit
    ;;
stop)
    "$wineserver" --kill || true
    ;;
*)
    exec "$wine" "$@"
    ;;
esac
