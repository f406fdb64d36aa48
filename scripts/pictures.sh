#!/usr/bin/env bash
# Updates the pictures in docs/: the window with 20 and with 64 cars of the stand-in simulator, a lap in
# its window, and a saved lap. Needs no screen and takes about five minutes after the build.
set -euo pipefail
export CDPATH=
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build_folder="build/pictures"
pictures="docs"
# Enough to leave the garage, for an out lap, two flying laps of 22 s and part of the next.
seconds_on_the_track=95
window_size="1500x920"

simulator=""
work_folder="$(mktemp -d)"

clean_up() {
    stop_simulator
    rm -rf "$work_folder"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

build() {
    scripts/setup.sh build viewer
    cmake --preset release -B "$build_folder" -DBUILD_TESTING=OFF
    cmake --build "$build_folder" --parallel "$(nproc)" \
        --target rataip rataip-simulator rataip-monitor rataip-viewer
}

start_simulator() {
    "$build_folder/bin/rataip-simulator" --track short --seed 7 --quiet "$@" </dev/null &
    simulator=$!
}

stop_simulator() {
    [[ -n "$simulator" ]] || return 0
    kill -TERM "$simulator" 2>/dev/null || true
    wait "$simulator" || true
    simulator=""
}

# Makes the picture of a window with so many cars. Passes further arguments to the viewer.
take_picture() {
    local cars="$1" file="$2"
    shift 2
    start_simulator --cars "$cars"
    QT_QPA_PLATFORM=offscreen XDG_CONFIG_HOME="$work_folder" \
        "$build_folder/bin/rataip-viewer" --size "$window_size" \
        --duration "$seconds_on_the_track" --picture "$file" "$@"
    stop_simulator
    printf 'Made %s\n' "$file"
}

# The own car's lap has the most channels, so its table is the largest.
save_lap() {
    local file="$1" table
    start_simulator --cars 4
    "$build_folder/bin/rataip-monitor" --wait 10 --duration "$seconds_on_the_track" \
        --export "$work_folder/laps" >"$work_folder/monitor.log"
    stop_simulator
    table="$(find "$work_folder/laps" -name '*_flying_*m*s*.csv' -printf '%s %p\n' |
        sort --numeric-sort --reverse | head -n 1 | cut -d ' ' -f 2-)"
    cp "${table%.csv}.png" "$file"
    printf 'Made %s\n' "$file"
}

build
mkdir -p "$pictures"
take_picture 20 "$pictures/viewer-20-cars.png" --lap-picture "$pictures/viewer-lap.png"
take_picture 64 "$pictures/viewer-64-cars.png"
save_lap "$pictures/lap.png"
