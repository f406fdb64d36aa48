#!/usr/bin/env bash
# Installs what is missing, builds, and runs every check of the project.
#
#   ./test.sh                  format, asan, tsan, windows, lint, fuzz: all that a change must pass
#   ./test.sh --quick          format, debug: the same tests without sanitizers, for an edit
#   ./test.sh --stage NAME     one stage (may be given several times)
#   ./test.sh --list           print the stages
#
# With RATAIP_WINDOWS_QT=FOLDER in the environment, the stage "windows" builds with the Qt for Windows
# in that folder and runs every test as a Windows program; otherwise only the tests without Qt.
#
# With CI=true in the environment, tests skipped because Wine is missing count as failures. When
# interrupted (Ctrl-C, SIGTERM), it ends everything that the stage started, with exit status 130 or 143.
set -euo pipefail
export CDPATH=
cd "$(dirname "${BASH_SOURCE[0]}")"

source_folders=(sdk irsdk yaml reader plugin tools benchmarks tests)
jobs="$(nproc)"

# A stage is a function stage_NAME. It stores a result of one line, if other than "ok", in the variable
# `result`.
all_stages=(format asan tsan windows lint fuzz)
quick_stages=(format debug)
declare -A stage_titles=(
    [format]="clang-format leaves every source as it is"
    [debug]="debug build and its tests"
    [asan]="build with address and undefined-behaviour sanitizers and its tests"
    [tsan]="build with the thread sanitizer and the tests that have threads"
    [windows]="cross build for Windows and its tests, run with Wine"
    [lint]="clang-tidy over the libraries, the plugin and the programs"
    [lint-tests]="clang-tidy over the tests, for a quarter of an hour"
    [fuzz]="every fuzz target for half a minute"
)
declare -A stage_packages=(
    [format]="lint"
    [debug]="build viewer test"
    [asan]="build viewer test"
    [tsan]="build test"
    [windows]="build viewer windows"
    [lint]="build viewer test lint"
    [lint-tests]="build viewer test lint"
    [fuzz]="build test fuzz"
)
# A stage works without these where they cannot be installed, and says so.
declare -A stage_optional_packages=(
    [windows]="wine"
)

stage_format() {
    find "${source_folders[@]}" \( -name '*.h' -o -name '*.cpp' \) -print0 |
        xargs -0 clang-format --dry-run -Werror
}

stage_debug() {
    build_and_test debug
}

# Checks for leaks and uses after free until the end of the program.
stage_asan() {
    export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_stack_use_after_return=1}"
    export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1}"
    build_and_test asan
}

stage_tsan() {
    local log="build/tsan/test.log"
    build tsan
    export TSAN_OPTIONS="suppressions='$PWD/tests/plugin/tsan.supp':${TSAN_OPTIONS:-}"
    build/tsan/bin/plugin-hostthread-tests 2>&1 | tee "$log"
    result="$(grep 'PASSED' "$log")"
}

# Programs without Qt run as Windows programs; everything else is only compiled for Windows. With a Qt
# for Windows in RATAIP_WINDOWS_QT, everything is linked and run.
stage_windows() {
    local qt=()
    if [[ -n "${RATAIP_WINDOWS_QT:-}" ]]; then
        qt=("-DCMAKE_PREFIX_PATH=$RATAIP_WINDOWS_QT" "-DQt6_DIR=$RATAIP_WINDOWS_QT/lib/cmake/Qt6"
            "-DQT_HOST_PATH=$(qmake6 -query QT_HOST_PREFIX)"
            "-DQT_HOST_PATH_CMAKE_DIR=$(qmake6 -query QT_HOST_LIBS)/cmake")
    fi
    # The build folder may still use the Qt of another run.
    cmake --preset windows-mingw -U 'Qt6*' -U 'QT_*' -U CMAKE_PREFIX_PATH "${qt[@]}"
    build_and_test windows-mingw
    local skipped
    skipped="$(grep -c '\*\*\*Skipped' build/windows-mingw/test.log || true)"
    if [[ "$skipped" -eq 0 ]]; then
        return
    fi
    result+="; $skipped of them SKIPPED, there is no Wine here"
    if [[ "${CI:-}" == true ]]; then
        printf 'test.sh: %s tests of Windows programs were skipped\n' "$skipped" >&2
        return 1
    fi
}

# Uses the compile commands of the build with sanitizers. Skips the generated meta-object sources.
stage_lint() {
    build asan
    run_clang_tidy 'irsdk|sdk|yaml|reader|plugin|tools|benchmarks'
}

# The slowest stage, because of GoogleTest's headers. For changes to the tests.
stage_lint-tests() {
    build asan
    run_clang_tidy 'tests'
}

# Four targets share the two minutes.
stage_fuzz() {
    local log="build/fuzz.log"
    mkdir -p build
    ./fuzz.sh 2 2>&1 | tee "$log"
    result="$(tail -n 1 "$log")"
}

# run_clang_tidy FOLDER|FOLDER...: over the sources of the build with the address sanitizer.
run_clang_tidy() {
    local here
    here="$(printf '%s' "$PWD" | sed 's/[][\.*^$+?(){}|]/\\&/g')"
    run-clang-tidy -quiet -j "$jobs" -p build/asan "^$here/($1)/.*\.cpp\$"
}

build() {
    local preset="$1"
    cmake --preset "$preset"
    cmake --build --preset "$preset" --parallel "$jobs"
}

build_and_test() {
    local preset="$1"
    local log="build/$preset/test.log"
    build "$preset"
    if ! ctest --preset "$preset" --parallel "$jobs" --no-tests=error 2>&1 | tee "$log"; then
        print_failures "build/$preset/Testing/Temporary/LastTest.log"
        return 1
    fi
    result="$(grep 'tests passed' "$log")"
}

# Printed at the end, where it is found in a long log.
print_failures() {
    printf '\n== What the tests that failed said\n'
    awk '/^[0-9]+\/[0-9]+ Testing: /{section = ""}
         {section = section $0 "\n"}
         /^Test (Failed|Timeout)/{printf "%s", section}' "$1" | tail -n 300
}

print_usage() {
    sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "${BASH_SOURCE[0]##*/}"
}

print_stages() {
    local stage
    for stage in format debug asan tsan windows lint lint-tests fuzz; do
        printf '%-10s %s\n' "$stage" "${stage_titles[$stage]}"
    done
}

die() {
    printf 'test.sh: %s\n' "$1" >&2
    exit 2
}

stages=()
parse_arguments() {
    while [[ $# -gt 0 ]]; do
        case "$1" in
        --quick) stages+=("${quick_stages[@]}") ;;
        --stage)
            [[ -n "${2:-}" && -n "${stage_titles[$2]:-}" ]] || die "--stage needs a name of --list"
            stages+=("$2")
            shift
            ;;
        --list)
            print_stages
            exit 0
            ;;
        -h | --help)
            print_usage
            exit 0
            ;;
        *) die "unknown option $1 (see --help)" ;;
        esac
        shift
    done
    [[ ${#stages[@]} -gt 0 ]] || stages=("${all_stages[@]}")
}

install_packages() {
    local groups=() stage group
    for stage in "${stages[@]}"; do
        for group in ${stage_packages[$stage]}; do
            groups+=("$group")
        done
    done
    scripts/setup.sh "${groups[@]}"
    for stage in "${stages[@]}"; do
        for group in ${stage_optional_packages[$stage]:-}; do
            scripts/setup.sh "$group" ||
                printf 'test.sh: going on without what the group "%s" holds\n' "$group" >&2
        done
    done
}

summary=()
current_stage=""
interrupted=""
result_file=""
end() {
    local status=$?
    rm -f "$result_file"
    [[ ${#summary[@]} -gt 0 || -n "$current_stage" ]] || return 0
    printf '\n== Summary\n'
    [[ ${#summary[@]} -eq 0 ]] || printf '%s\n' "${summary[@]}"
    if [[ $status -ne 0 ]]; then
        printf '%-10s %s: %s\n' "$current_stage" "${interrupted:-FAILED}" \
            "${stage_titles[$current_stage]}"
    fi
}

# Ends the group of the stage that was started last.
stop_stage() {
    local tenth patience=100
    kill -TERM -- "-$!" 2>/dev/null || return 0
    for ((tenth = 0; tenth < patience; ++tenth)); do
        kill -0 -- "-$!" 2>/dev/null || return 0
        sleep 0.1
    done
    kill -KILL -- "-$!" 2>/dev/null || true
}

interrupt() {
    trap '' HUP INT TERM
    interrupted="interrupted"
    stop_stage
    exit "$1"
}

# Waits for a stage in the background, so that a request to end reaches this script at once. The stage
# has its own process group, so that its builds and tests can be ended with it.
run_stage() {
    local started=$SECONDS
    current_stage="$1"
    printf '\n== %s: %s\n' "$1" "${stage_titles[$1]}"
    set -m
    (
        result="ok"
        "stage_$1"
        printf '%s' "$result" >"$result_file"
    ) </dev/null &
    set +m
    wait "$!"
    summary+=("$(printf '%-10s %5d s  %s' "$1" $((SECONDS - started)) "$(<"$result_file")")")
    current_stage=""
}

parse_arguments "$@"
install_packages
result_file="$(mktemp)"
trap end EXIT
trap 'interrupt 129' HUP
trap 'interrupt 130' INT
trap 'interrupt 143' TERM
for stage in "${stages[@]}"; do
    run_stage "$stage"
done
