#!/usr/bin/env bash
# Installs missing packages on Debian 12 and related systems.
#
#   scripts/setup.sh GROUP...      install the groups' missing packages
#   scripts/setup.sh --list        print the groups and their packages
#
# When nothing is missing, it needs neither the network nor root. On other systems it only names the
# packages.
set -euo pipefail

declare -A packages=(
    [build]="g++ cmake ninja-build qt6-base-dev libgl-dev"
    [viewer]="qt6-charts-dev libqt6opengl6-dev fonts-dejavu-core"
    [test]="libgtest-dev"
    [lint]="clang-format clang-tidy python3"
    [coverage]="gcovr"
    [fuzz]="clang libclang-rt-dev"
    [bench]="libbenchmark-dev libyaml-dev libyaml-cpp-dev"
    [windows]="g++-mingw-w64-x86-64-posix googletest"
    [wine]="wine64 fonts-dejavu-core"
)
group_order=(build viewer test lint coverage fuzz bench windows wine)

list_groups() {
    local group
    for group in "${group_order[@]}"; do
        printf '%-10s %s\n' "$group" "${packages[$group]}"
    done
}

die() {
    printf 'setup.sh: %s\n' "$1" >&2
    exit 1
}

is_installed() {
    # There is a line for each architecture of a package.
    dpkg-query --show --showformat='${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed
}

# Runs a command as root, with sudo if necessary.
as_root() {
    if [[ "$(id -u)" -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "missing packages and neither root nor sudo to install them: ${missing[*]}"
    fi
}

apt() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get \
        -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3 "$@"
}

wanted=()
for argument in "$@"; do
    case "$argument" in
    --list)
        list_groups
        exit 0
        ;;
    *)
        [[ -n "${packages[$argument]:-}" ]] || die "no such group: $argument (see --list)"
        read -r -a group <<<"${packages[$argument]}"
        wanted+=("${group[@]}")
        ;;
    esac
done
[[ ${#wanted[@]} -gt 0 ]] || die "no group given (see --list)"

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    printf 'Not a Debian system: make sure that what these packages hold is installed: %s\n' \
        "${wanted[*]}"
    exit 0
fi

missing=()
for package in "${wanted[@]}"; do
    is_installed "$package" || missing+=("$package")
done
if [[ ${#missing[@]} -eq 0 ]]; then
    exit 0
fi

printf 'Installing: %s\n' "${missing[*]}"
apt update
apt install --yes --no-install-recommends "${missing[@]}"
