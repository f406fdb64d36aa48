#!/usr/bin/env bash
# The demonstration only names files that still exist when it has ended, and README.md shows its output.
#
#   demo_test.sh FOLDER    the folder that holds demo.sh and README.md
set -euo pipefail

folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
programs="$folder/build/demo/bin"
mkdir -p "$folder/scripts" "$programs"
cp "$1/demo.sh" "$folder/"
for stub in "$folder/scripts/setup.sh" "$programs/cmake" "$programs/rataip-simulator"; do
    printf '#!/bin/sh\n' >"$stub"
done
# Saves a lap where its last argument tells it to, and says so as the monitor does.
cat >"$programs/rataip-monitor" <<'END'
#!/bin/bash
laps="${!#}"
mkdir -p "$laps"
for suffix in csv json png; do
    printf 'lap\n' >"$laps/car01_Ada-Berg_practice_lap2_flying_1m34s512.$suffix"
done
printf '1 laps saved in %s\n' "$(cd "$laps" && pwd)"
END
chmod +x "$folder/scripts/setup.sh" "$programs"/*
cd "$folder"
PATH="$programs:$PATH" ./demo.sh >output

fail() {
    printf 'FAILED: %s\n' "$1" >&2
    cat output >&2
    exit 1
}

named="$(grep -oE '(^| )[^ ]*/[^ ]*$' output | tr -d ' ')"
[[ "$(wc -l <<<"$named")" -ge 2 ]] || fail "it names no folder and no lap"
while IFS= read -r path; do
    [[ -e "$path" ]] || fail "it names $path, which is not there"
done <<<"$named"

# Only the script's own lines, not those of the programs.
while IFS= read -r line; do
    grep -qxF "    $line" "$1/README.md" || fail "README.md does not show: $line"
done < <(grep -vE '^$|/' output)
