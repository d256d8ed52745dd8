#!/usr/bin/env bash
# Writes docs/register-map.md from the register map that is compiled into the driver and the simulated units.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset release >/dev/null
cmake --build --preset release --target unitmap-doc >/dev/null
mkdir -p docs
document=$(build/release/run/unitmap-doc)
printf '%s\n' "$document" >docs/register-map.md
echo "Wrote docs/register-map.md" >&2
