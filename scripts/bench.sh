#!/usr/bin/env bash
# Installs, builds and runs the benchmarks; options go to them: scripts/bench.sh --benchmark_filter=refreshTab
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh libbenchmark-dev
log=build/bench/build.log
mkdir -p build/bench
if ! { cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DWITH_BENCHMARKS=ON &&
    cmake --build build/bench --target bench_pages; } >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    echo "The build failed; all of it is in $log." >&2
    exit 1
fi
exec build/bench/bench/bench_pages "$@"
