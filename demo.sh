#!/usr/bin/env bash
# Builds everything, starts three simulated units (two on one serial line, one on TCP) and runs the host on
# them: its window, or lines of text where there is no display. All options go to the host:
# ./demo.sh --headless --seconds 25, or ./demo.sh --screenshots DIR
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly root
readonly run=$root/build/release/run
readonly dev_ini=PVMX/drovaPanel/db/dev.ini # under $run
readonly ready_limit_s=10

simulators=()
host=
interrupted=

# Standard output belongs to the host: with --json nothing else may be on it.
say() { printf 'demo: %s\n' "$*" >&2; }
fail() {
    say "$*"
    exit 1
}

# On Ctrl-C and the like the host ends first, so that it never sees a unit vanish, then the simulators.
stop_simulators() {
    local pid
    for pid in "${simulators[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    for pid in "${simulators[@]}"; do
        wait "$pid" 2>/dev/null || true
    done
}
on_signal() {
    interrupted=yes
    [[ -z $host ]] || kill -TERM "$host" 2>/dev/null || true
}
end_if_interrupted() {
    [[ -z $interrupted ]] || exit 130
}

take_lock() {
    mkdir -p "$root/build"
    exec 9>"$root/build/.demo.lock"
    flock --nonblock 9 || fail "another demo runs in this folder; end it first"
}

# start_simulator LOG READY_PATTERN OPTION...: starts one and waits until its log has the line. Should this
# script be killed, its children are ended by the system.
start_simulator() {
    local log=$1 ready=$2
    shift 2
    : >"$log"
    setpriv --pdeathsig TERM ./ups-sim "$@" >"$log" 2>&1 9>&- &
    local pid=$!
    simulators+=("$pid")
    local deadline=$((SECONDS + ready_limit_s))
    until grep -q "$ready" "$log"; do
        if ! kill -0 "$pid" 2>/dev/null; then
            fail "ups-sim $* ended at once: $(tail -n 1 "$log")"
        fi
        end_if_interrupted
        ((SECONDS < deadline)) || fail "ups-sim $* is not ready after $ready_limit_s s; see $run/$log"
        sleep 0.1
    done
}

start_units() {
    start_simulator sim-serial.log '^serial line .* ready' \
        --serial ttyUPS --baud 9600 --address 1 --address 2 --scenario demo \
        --trace trace-serial.jsonl
    start_simulator sim-tcp.log '^listening on ' --tcp 0 --scenario demo \
        --trace trace-tcp.jsonl
    local port
    port=$(sed -n 's/^listening on .*:\([0-9][0-9]*\)$/\1/p' sim-tcp.log | head -n 1)
    [[ -n $port ]] || fail "ups-sim did not say its TCP port; see $run/sim-tcp.log"
    sed -i "/^\[UPS-C\]/,/^\[/ s/^port=.*/port=$port/" "$dev_ini"
}

# The host runs in a folder of its own, but a folder for pictures is meant as seen from the caller's.
options=()
read_options() {
    local previous='' option
    for option in "$@"; do
        if [[ $previous = --screenshots && -n $option ]]; then
            option=$(realpath -m -- "$option")
        elif [[ $option = --screenshots=?* ]]; then
            option=--screenshots=$(realpath -m -- "${option#*=}")
        fi
        options+=("$option")
        previous=$option
    done
}

# Where no window can open, the host prints what it would show.
choose_output() {
    local option
    [[ -z ${DISPLAY:-}${WAYLAND_DISPLAY:-}${QT_QPA_PLATFORM:-} ]] || return 0
    for option in "${options[@]}"; do
        case $option in
        --headless | --check* | --screenshots* | --export-* | --help | -h | --version | -v) return 0 ;;
        esac
    done
    say 'there is no display, so the host prints lines instead of opening its window'
    options=(--headless "${options[@]}")
}

run_host() {
    local status
    end_if_interrupted
    setpriv --pdeathsig TERM ./ups-host "$@" 9>&- &
    host=$!
    # A trap ends wait early: then the host is still ending, and its own status counts.
    while :; do
        interrupted=
        status=0
        wait "$host" || status=$?
        [[ -n $interrupted ]] || break
    done
    host=
    return "$status"
}

read_options "$@"
choose_output
take_lock
"$root/scripts/install-deps.sh" 9>&- >&2
"$root/scripts/build.sh" release 9>&-
cd "$run"
trap stop_simulators EXIT
trap on_signal INT TERM HUP
# A process group for each child: Ctrl-C then reaches this script alone, which ends them in order.
set -m
start_units
run_host "${options[@]}"
