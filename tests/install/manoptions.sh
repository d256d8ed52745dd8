#!/usr/bin/env bash
# manoptions.sh PROGRAM PAGE: fails unless the page has every option of the program's help and no other.
set -euo pipefail

diff --label "$1 --help" --label "$2" \
    <("$1" --help | sed -nE 's/^  (-[a-z], )?--([a-z-]+).*/\2/p' | sort) \
    <(sed -nE 's/^\.It Fl ([a-z] , )?-([a-z-]+).*/\2/p' "$2" | sort)
