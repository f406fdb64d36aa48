#!/usr/bin/env bash
# If test.sh is interrupted in a stage, it says so, sets its exit status, and leaves nothing running.
#
#   interrupted_test.sh FOLDER    the folder that holds test.sh
set -euo pipefail

folder="$(mktemp -d)"
build_process=""
clean_up() {
    [[ -z "$build_process" ]] || kill -KILL "$build_process" 2>/dev/null || true
    rm -rf "$folder"
}
trap clean_up EXIT

mkdir "$folder/scripts" "$folder/programs"
cp "$1/test.sh" "$folder/"
printf '#!/bin/sh\n' >"$folder/scripts/setup.sh"
# A build that hangs, in a child process of the started one.
cat >"$folder/programs/cmake" <<'END'
#!/bin/bash
[[ "$1" == --build ]] || exit 0
bash -c 'printf "%d\n" $$ >build-process.new; mv build-process.new build-process; exec sleep 120' &
wait
END
chmod +x "$folder/scripts/setup.sh" "$folder/programs/cmake"
cd "$folder"
PATH="$folder/programs:$PATH"

# A zombie is not running.
is_running() {
    grep -qs '^State:[[:space:]]*[^Z[:space:]]' "/proc/$1/status"
}

fail() {
    printf 'FAILED: %s %s: %s\n' "$signal" "$whom" "$1" >&2
    cat output >&2
    exit 1
}

# Interrupts the script alone, or its process group as Ctrl-C does, and expects an exit status.
expect_status() {
    local signal="$1" whom="$2" expected="$3" script status=0
    rm -f build-process
    # The caller may ignore these signals.
    set -m
    env --default-signal=INT,TERM ./test.sh --stage debug >output 2>&1 &
    script=$!
    set +m
    until [[ -e build-process ]]; do
        kill -0 "$script" 2>/dev/null || fail "ended before it was interrupted"
        sleep 0.05
    done
    build_process="$(<build-process)"
    if [[ "$whom" == group ]]; then
        kill -s "$signal" -- "-$script"
    else
        kill -s "$signal" "$script"
    fi
    wait "$script" || status=$?
    [[ "$status" -eq "$expected" ]] || fail "exit status $status, not $expected"
    grep -q '^debug  *interrupted: ' output || fail "the summary does not say so"
    ! is_running "$build_process" || fail "its build still runs"
}

expect_status INT script 130
expect_status INT group 130
expect_status TERM script 143
expect_status TERM group 143
