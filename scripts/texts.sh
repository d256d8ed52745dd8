#!/usr/bin/env bash
# Gathers every text of plugin and host for translators.
#   scripts/texts.sh [FILE.ts [PROGRAM]]
# FILE (build/ups-host.ts) is made, or brought up to date: what is translated in it stays. A name such as
# ups-host_de.ts says the language. PROGRAM is table-texts where it has been built already.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
export QT_SELECT=5 # where a system has the tools of several versions

file=${1:-$root/build/ups-host.ts}
program=${2:-}
case "$file" in
    *.ts) ;;
    *) echo "texts: $file: the name of the file has to end in .ts" >&2; exit 2 ;;
esac
if [ -z "$program" ]; then
    (
        cd "$root"
        scripts/install-deps.sh qttools5-dev-tools
        cmake --preset release >/dev/null
        cmake --build --preset release --target table-texts >/dev/null
    )
    program=$root/build/release/run/table-texts
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
copy=$work/$(basename "$file")
gather() {
    "$program" >"$work/tabletexts.cpp" || return
    [ ! -e "$file" ] || cp "$file" "$copy" || return
    # Without line numbers, so that the file changes only where a text does.
    (cd "$root" && lupdate -silent -locations none -source-language en \
        client comm dictionary host views "$work/tabletexts.cpp" -ts "$copy") || return
    # What lupdate warns of is a text that nobody would find under the context that it was put in.
    [ ! -s "$work/log" ]
}
if ! gather 2>"$work/log"; then
    cat "$work/log" >&2
    echo "texts: $file was not written" >&2
    exit 1
fi
mkdir -p "$(dirname "$file")"
cp "$copy" "$file"
echo "Wrote $file" >&2
