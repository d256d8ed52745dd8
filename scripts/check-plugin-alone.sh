#!/usr/bin/env bash
# Builds the plugin from a copy of the tree without any of the tool folders: the product must not depend on
# what stands around it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cp -r "$root/CMakeLists.txt" "$root/cmake" "$root/client" "$root/comm" "$root/dictionary" "$work/"
for folder in views image; do
    [ ! -d "$root/$folder" ] || cp -r "$root/$folder" "$work/"
done
cmake -S "$work" -B "$work/build" -G Ninja -DWITH_TOOLS=OFF >"$work/log" 2>&1 &&
    cmake --build "$work/build" >>"$work/log" 2>&1 || { tail -n 30 "$work/log" >&2; exit 1; }
test -f "$work/build/run/libvek5m_10-30k_Client.so"
