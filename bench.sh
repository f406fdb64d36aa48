#!/usr/bin/env bash
# Measures what a tick costs, against the floors of docs/performance.md.
#
#   ./bench.sh                 install what is missing, build, print the table, draw the plot of tick
#                              time as build/bench/tick-time.svg
#   ./bench.sh --check         the same; the exit status is 1 when a floor is missed
#   ./bench.sh --filter REGEX  only the measurements whose names match; no plot
#   ./bench.sh --update-plot   the plot also replaces the one of docs/performance.md
#
# Every figure is a ratio within one process, so that it hardly depends on the machine. A run takes
# less than three minutes after the build. No simulator may be running meanwhile.
set -euo pipefail
export CDPATH=
cd "$(dirname "${BASH_SOURCE[0]}")"

plot_file="build/bench/tick-time.svg"
documented_plot_file="docs/tick-time.svg"

print_usage() {
    sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "${BASH_SOURCE[0]##*/}"
}

die() {
    printf 'bench.sh: %s\n' "$1" >&2
    exit 2
}

arguments=()
filter=""
update_plot=false
while [[ $# -gt 0 ]]; do
    case "$1" in
    --check) arguments+=(--check) ;;
    --update-plot) update_plot=true ;;
    --filter)
        [[ -n "${2:-}" ]] || die "--filter needs a regular expression"
        filter="$2"
        shift
        ;;
    -h | --help)
        print_usage
        exit 0
        ;;
    *) die "unknown option $1 (see --help)" ;;
    esac
    shift
done
if [[ -n "$filter" ]]; then
    [[ $update_plot == false ]] || die "--update-plot needs every measurement, not a --filter"
    arguments+=("--benchmark_filter=$filter")
else
    arguments+=(--plot "$plot_file")
fi

scripts/setup.sh build bench
cmake --preset bench
cmake --build --preset bench --parallel "$(nproc)"
printf '\n'
status=0
build/bench/bin/rataip-bench "${arguments[@]}" || status=$?
if [[ $update_plot == true && $status -le 1 ]]; then
    cp "$plot_file" "$documented_plot_file"
fi
exit "$status"
