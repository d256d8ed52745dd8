#!/usr/bin/env bash
# Configures and builds one preset, quietly: the compiler is heard only when it fails.
#   scripts/build.sh release|asan
set -euo pipefail
cd "$(dirname "$0")/.."

preset=${1:?preset name}
mkdir -p "build/$preset"
log="build/$preset/build.log"
options=(-DWARNINGS_AS_ERRORS=OFF)
[ -z "${CI:-}" ] || options=(-DWARNINGS_AS_ERRORS=ON)
echo "Building preset $preset (log in $log) ..." >&2
if ! { cmake --preset "$preset" "${options[@]}" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    echo "The build failed; all of it is in $log." >&2
    exit 1
fi
