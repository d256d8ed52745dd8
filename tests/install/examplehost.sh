#!/usr/bin/env bash
# examplehost.sh SOURCE BUILD: installs what was built, builds the example of a host against that alone, and has it ask
# a simulated unit.
set -euo pipefail
source=$1
build=$2
. "$source/tests/install/simulatedunits.sh"

prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >"$work/log"
mv "$prefix" "$prefix-moved" # what was installed may be copied elsewhere
prefix=$prefix-moved
example=$(dirname "$(find "$prefix/share/doc" -path '*/host/main.cpp')")
[ "$(wc -l <"$example/main.cpp")" -le 60 ] || fail "the example has more than 60 lines"

{ cmake -S "$example" -B "$work/example" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" &&
    cmake --build "$work/example"; } >"$work/log" 2>&1 || fail "$(cat "$work/log")"

start_units "$prefix/bin/ups-sim"
mkdir -p "$work/example/PVMX/drovaPanel/db"
printf '[A]\ncommType=1\nipAddr=127.0.0.1\nport=%s\n' "$port" >"$work/example/PVMX/drovaPanel/db/dev.ini"
cp "$(find "$prefix" -name 'libvek5m_10-30k.so')" "$work/example/"
cd "$work/example"
./example-host A >out 2>&1 || fail "exit code $?: $(cat out)"
grep -qx '9[0-9][0-9] values' out || fail "$(cat out)"

# Installed once more, as an update is: the configuration is the machine's.
configuration=$prefix/etc/ups-host/drovaPanel/db/dev.ini
echo '[mine]' >"$configuration"
cmake --install "$build" --prefix "$prefix" >"$work/log"
grep -qx '\[mine\]' "$configuration" || fail "the configuration was overwritten"
