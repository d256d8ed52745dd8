#!/usr/bin/env bash
# Installs the Debian packages that building, running and testing need, and those named. Quick when they are there.
set -euo pipefail

packages=(
    "$@"
    g++ cmake ninja-build pkg-config
    qtbase5-dev                 # Qt 5: plugin, host, tests
    libqt5sql5-sqlite           # the host's journal
    libqwt-qt5-dev              # the trends of the host's window
    libhidapi-dev libudev-dev   # USB HID units, linked into the plugin
    libmodbus-dev               # the simulated units
    fonts-inter                 # the typeface of the pages; it has U+2103, the degree Celsius
    mbpoll                      # the independent client that tests the simulated units
)

missing=()
for package in "${packages[@]}"; do
    state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

run_as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "install-deps: missing ${missing[*]}: install them as root, or install sudo" >&2
        exit 1
    fi
    run_as_root=(sudo)
fi

echo "Installing ${missing[*]} ..." >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
install() {
    "${run_as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}" >>"$log" 2>&1
}
# The package lists may be absent or old: fetch them only then, it takes a while.
if ! install && ! { "${run_as_root[@]}" apt-get update >>"$log" 2>&1 && install; }; then
    echo "install-deps: apt-get could not install ${missing[*]}: $(grep -m1 '^E:' "$log" || tail -n1 "$log")" >&2
    exit 1
fi
