# shellcheck shell=bash
# Sourced by the tests of installed programs: work, a folder that is removed at the end, and simulated units.

work=$(mktemp -d)
simulator=
end_test() {
    [ -z "$simulator" ] || kill "$simulator" || true
    rm -rf "$work"
}
trap end_test EXIT

fail() {
    echo "$*" >&2
    exit 1
}

# start_units PROGRAM OPTION...: simulated units on TCP; sets port.
start_units() {
    "$1" --tcp 0 "${@:2}" >"$work/units.log" 2>&1 &
    simulator=$!
    until port=$(sed -n 's/^listening on .*://p' "$work/units.log") && [ -n "$port" ]; do
        kill -0 "$simulator" || fail "$(cat "$work/units.log")"
        sleep 0.1
    done
}
