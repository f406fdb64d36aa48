#!/usr/bin/env bash
# Builds with line coverage, runs every test and prints the covered lines of each source file of the
# libraries and the plugin, with the total. Fails when the total is below the floor.
set -euo pipefail
export CDPATH=
cd "$(dirname "${BASH_SOURCE[0]}")/.."

floor_percent=95
build_folder="build/coverage"
jobs="$(nproc)"

scripts/setup.sh build test coverage
cmake --preset coverage
cmake --build --preset coverage --parallel "$jobs"
# The counters would otherwise include those of an earlier run.
find "$build_folder" -name '*.gcda' -delete
ctest --preset coverage --parallel "$jobs" --no-tests=error

gcovr --root . --object-directory "$build_folder" \
    --filter 'sdk/' --filter 'irsdk/' --filter 'yaml/' --filter 'reader/' --filter 'plugin/' \
    --exclude-throw-branches --exclude-unreachable-branches \
    --fail-under-line "$floor_percent" "$build_folder"
