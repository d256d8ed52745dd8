#!/usr/bin/env bash
# Makes the Debian packages of plugin and tools.
#   scripts/package.sh [FOLDER [BUILD]]
# FOLDER (build/packages) gets them. BUILD is a build folder where everything has been built already.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

folder=${1:-$root/build/packages}
build=${2:-}
if [ -z "$build" ]; then
    "$root/scripts/install-deps.sh" dpkg-dev file
    "$root/scripts/build.sh" release
    build=$root/build/release
fi

umask 022 # of what is packaged
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if ! cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/log" 2>&1; then
    cat "$work/log" >&2
    echo "package: no packages were made" >&2
    exit 1
fi
mkdir -p "$folder"
for package in "$work"/*.deb; do
    mv "$package" "$folder/"
    echo "Wrote $folder/$(basename "$package")" >&2
done
