#!/usr/bin/env bash
# Runs every fuzz target for a while and reports the findings.
#
#   ./fuzz.sh MINUTES                 install what is missing, build, share MINUTES among the targets
#   ./fuzz.sh MINUTES --target NAME   one target (may be given several times)
#
# The exit status is 1 after a finding: an input that makes a target fail by a sanitizer, a violated
# promise, the time limit or the memory limit. Findings are kept in build/fuzz/findings. Useful inputs
# are kept in build/fuzz/corpus, from which the next run continues. To reproduce a finding:
#
#   build/fuzz/bin/rataip-fuzz-NAME build/fuzz/findings/NAME/crash-...
#
# Once fixed, it belongs in tests/fuzz/findings/NAME, where every test run reads it.
set -euo pipefail
export CDPATH=
cd "$(dirname "${BASH_SOURCE[0]}")"

all_targets=(block sessiontext ticks streams)
# Larger inputs cover nothing new and take longer.
declare -A longest_inputs=([block]=65536 [sessiontext]=8192 [ticks]=96 [streams]=2048)

print_usage() {
    sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "${BASH_SOURCE[0]##*/}"
}

die() {
    printf 'fuzz.sh: %s\n' "$1" >&2
    exit 2
}

minutes=""
targets=()
parse_arguments() {
    while [[ $# -gt 0 ]]; do
        case "$1" in
        --target)
            [[ -n "${2:-}" && -n "${longest_inputs[$2]:-}" ]] ||
                die "--target needs one of: ${all_targets[*]}"
            targets+=("$2")
            shift
            ;;
        -h | --help)
            print_usage
            exit 0
            ;;
        *)
            [[ -z "$minutes" && "$1" =~ ^[1-9][0-9]*$ ]] ||
                die "MINUTES is a whole number (see --help)"
            minutes="$1"
            ;;
        esac
        shift
    done
    [[ -n "$minutes" ]] || die "MINUTES is missing (see --help)"
    [[ ${#targets[@]} -gt 0 ]] || targets=("${all_targets[@]}")
}

build() {
    scripts/setup.sh build test fuzz
    cmake --preset fuzz
    cmake --build --preset fuzz --parallel "$(nproc)"
    build/fuzz/bin/rataip-fuzz-seeds build/fuzz/seeds
}

# A damaged stream may announce more data than fits into memory. The allocation then fails, which the
# readers handle.
sanitizers_of_runs() {
    export ASAN_OPTIONS="allocator_may_return_null=1:max_allocation_size_mb=512:${ASAN_OPTIONS:-}"
    export UBSAN_OPTIONS="print_stacktrace=1:${UBSAN_OPTIONS:-}"
}

fuzz() {
    local target="$1" seconds="$2" log="build/fuzz/$1.log"
    local dictionary="tests/fuzz/dictionaries/$target.dict"
    local options=()
    [[ ! -f "$dictionary" ]] || options+=("-dict=$dictionary")
    local former="tests/fuzz/findings/$target"
    local inputs=("build/fuzz/corpus/$target" "build/fuzz/seeds/$target")
    [[ ! -d "$former" ]] || inputs+=("$former")
    mkdir -p "build/fuzz/corpus/$target" "build/fuzz/findings/$target"
    # A failure means a finding, which the table shows.
    "build/fuzz/bin/rataip-fuzz-$target" "${options[@]}" \
        -max_total_time="$seconds" -max_len="${longest_inputs[$target]}" -len_control=50 \
        -timeout=25 -rss_limit_mb=2048 -malloc_limit_mb=0 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/findings/$target/" \
        "${inputs[@]}" >"$log" 2>&1 || return 1
}

executions_of() {
    sed -n 's/^stat::number_of_executed_units: *//p' "build/fuzz/$1.log"
}

parse_arguments "$@"
build
sanitizers_of_runs
seconds=$((minutes * 60 / ${#targets[@]}))
total=0
findings=0
printf '\n%-12s %10s %12s %9s\n' target seconds executions findings
for target in "${targets[@]}"; do
    started=$SECONDS
    found=0
    fuzz "$target" "$seconds" || found=1
    executions="$(executions_of "$target")"
    printf '%-12s %10d %12d %9d\n' "$target" $((SECONDS - started)) "${executions:-0}" "$found"
    [[ $found -eq 0 ]] || tail -n 30 "build/fuzz/$target.log"
    total=$((total + ${executions:-0}))
    findings=$((findings + found))
done
printf 'Fuzzing: %d executions, %d findings\n' "$total" "$findings"
[[ $findings -eq 0 ]]
