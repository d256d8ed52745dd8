#!/usr/bin/env bash
# Installs, builds and runs the benchmarks, all or those named: tcp serial line cycle units load window pages.
#   scripts/bench.sh [--json FILE] [name...]
# Client and simulated units get a processor each; it takes about six minutes on an idle machine.
set -euo pipefail
json=()
if [ "${1:-}" = --json ]; then
    json=(--json "$(realpath -m "${2:?--json needs the name of a file}")")
    shift 2
fi
cd "$(dirname "$0")/.."

scripts/install-deps.sh libbenchmark-dev libqt5serialbus5-dev
build=${BUILD_DIR:-build/bench}
log=$build/build.log
mkdir -p "$build"
if ! { cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DWITH_BENCHMARKS=ON &&
    cmake --build "$build" --target ups-bench; } >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    echo "The build failed; all of it is in $log." >&2
    exit 1
fi
commit=$(git describe --always --dirty 2>/dev/null || echo unknown)
exec "$build/bench/ups-bench" "${json[@]}" --commit "$commit" "$@"
