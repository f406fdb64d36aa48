#!/usr/bin/env bash
# Shows the plugin at work: builds everything, lets the stand-in simulator drive a practice at a raised
# speed and watches it through the plugin. Needs no simulator and ends by itself within a minute
# after the build; Ctrl-C ends it earlier. The laps are left in demo-out/ as picture, table and
# header.
#
#   ./demo.sh            on the console
#   ./demo.sh --window   in a window, until it is closed; on the console where there is no display
set -euo pipefail
export CDPATH=
cd "$(dirname "${BASH_SOURCE[0]}")"

build_folder="build/demo"
laps_folder="demo-out"
laps_to_name=3
laps_to_watch=30
most_seconds_to_watch=55
seconds_for_an_orderly_end=5

with_window=""
case "${1:-}" in
"") ;;
--window) with_window=yes ;;
*)
    printf 'demo.sh: unknown argument %s; it takes --window or nothing\n' "$1" >&2
    exit 2
    ;;
esac

simulator=""
watcher=""
simulator_log=""
work_folder="$(mktemp -d)"

is_running() {
    [[ -n "$1" ]] && kill -0 "$1" 2>/dev/null
}

# Asks a child process to end, and kills it when it does not do so in time.
stop() {
    local pid="$1" tenth
    is_running "$pid" || return 0
    kill -TERM "$pid" 2>/dev/null || true
    for ((tenth = 0; tenth < seconds_for_an_orderly_end * 10; ++tenth)); do
        is_running "$pid" || return 0
        sleep 0.1
    done
    kill -KILL "$pid" 2>/dev/null || true
}

clean_up() {
    stop "$watcher"
    stop "$simulator"
    rm -rf "$work_folder"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

build() {
    local programs=(rataip rataip-simulator rataip-monitor)
    if [[ -n "$with_window" ]]; then
        scripts/setup.sh build viewer
        programs+=(rataip-viewer)
    else
        scripts/setup.sh build
    fi
    cmake --preset release -B "$build_folder" -DBUILD_TESTING=OFF
    cmake --build "$build_folder" --parallel "$(nproc)" --target "${programs[@]}"
}

has_display() {
    [[ -n "${DISPLAY:-}" || -n "${WAYLAND_DISPLAY:-}" ]]
}

start_simulator() {
    simulator_log="$work_folder/simulator.log"
    "$build_folder/bin/rataip-simulator" --session practice --cars 12 --seed 7 "$@" \
        >"$simulator_log" 2>&1 </dev/null &
    simulator=$!
}

# Runs in the background and is waited for, so that Ctrl-C reaches this script at once.
watch() {
    "$build_folder/bin/$1" "${@:2}" &
    watcher=$!
    wait "$watcher"
}

# Runs a demonstration. On failure shows the simulator's output.
demonstrate() {
    local status=0
    watch "$@" || status=$?
    if [[ $status -ne 0 ]]; then
        printf '\n%s ended with status %d. The simulator said:\n' "$1" "$status" >&2
        cat "$simulator_log" >&2
        exit "$status"
    fi
}

# The folder belongs to the demonstration, which replaces the contents of an earlier one.
clear_laps() {
    mkdir -p "$laps_folder"
    rm -f "$laps_folder"/car*.{csv,json,png}
}

# The flying laps with the largest tables: the own car's, which has the most channels, come first.
name_laps() {
    printf '\nEach as picture (.png), table (.csv) and header (.json); the fullest are\n'
    find "$laps_folder" -name '*_flying_*m*s*.csv' -printf '%s %p\n' |
        sort --numeric-sort --reverse | head -n "$laps_to_name" |
        sed 's/^[0-9]* \(.*\)csv$/    \1png/'
}

show_window() {
    printf '\nA practice of 12 cars in a window; close it to end.\n'
    start_simulator --track short
    demonstrate rataip-viewer
}

show_console() {
    printf '\nA practice of 12 cars at twelve times the clock, seen through the plugin. It takes a hundred\n'
    printf 'ticks a second at most, so that most of these 720 are "lost":\n\n'
    clear_laps
    start_simulator --speed 12
    demonstrate rataip-monitor --wait 10 --laps "$laps_to_watch" \
        --duration "$most_seconds_to_watch" --export "$laps_folder"
    name_laps
}

if [[ -n "$with_window" ]] && ! has_display; then
    printf 'There is no display here (neither DISPLAY nor WAYLAND_DISPLAY is set): no window.\n'
    with_window=""
fi
build
if [[ -n "$with_window" ]]; then
    show_window
else
    show_console
fi
