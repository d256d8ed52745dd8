#!/usr/bin/env bash
# packages.sh SOURCE BUILD: makes the packages, installs them into an empty tree, runs the installed host on simulated
# units as an ordinary user, and removes the packages again. As root or with fakeroot.
set -euo pipefail
source=$1
build=$2
. "$source/tests/install/simulatedunits.sh"
chmod 755 "$work"

"$source/scripts/package.sh" "$work/packages" "$build"
packages=("$work"/packages/vek5m-10-30k-plugin_*.deb "$work"/packages/ups-host-tools_*.deb)
if command -v lintian >/dev/null; then
    lintian --allow-root --tag-display-limit 0 --fail-on error,warning "${packages[@]}"
fi

# A tree has neither shell nor libraries: scripts run outside, and dependencies are this machine's.
tree=$work/root
mkdir -p "$tree"/var/lib/dpkg/{info,updates,triggers}
touch "$tree"/var/lib/dpkg/{status,available}
as_root=()
as_user=()
if [ "$(id -u)" -eq 0 ]; then
    as_user=(setpriv --reuid=65534 --regid=65534 --groups="$(getent group dialout | cut -d: -f3)")
else
    as_root=(fakeroot)
fi
debian() {
    "${as_root[@]}" dpkg --root="$tree" --log="$work/dpkg.log" --force-script-chrootless --force-depends \
        "$@" >"$work/log" 2>&1 || fail "dpkg $*: $(cat "$work/log")"
}
list_tree() { find "$tree" -path "$tree/var/lib/dpkg/*" -prune -o -print; }
list_tree >"$work/before"
debian --install "${packages[@]}"

# Whoever may use serial lines sets up the units, by replacing the file as the host does.
mkdir -p "$work/home" "$work/user"
[ ${#as_user[@]} -eq 0 ] || chown 65534:65534 "$work/home" "$work/user"
db=$tree/etc/ups-host/drovaPanel/db
start_units "$tree/usr/bin/ups-sim" --serial "$work/line" --baud 0
printf '[tcp]\ncommType=1\nipAddr=127.0.0.1\nport=%s\n[serial]\nportName=%s\n' "$port" "$work/line" |
    "${as_user[@]}" sh -c "cat >'$db/dev.ini.new' && mv '$db/dev.ini.new' '$db/dev.ini'"

# The line belongs to who simulates it: an ordinary user needs it opened to all.
chmod 666 "$work/line"
host() {
    (cd "$work/user" && env -u XDG_DATA_HOME -u XDG_CONFIG_HOME HOME="$work/home" "${as_user[@]}" \
        "$tree/usr/bin/ups-host" "$@")
}
host --headless --seconds 20 >"$work/out" 2>&1 || fail "exit code $?: $(cat "$work/out")"
host --export-events events.csv
for unit in tcp serial; do
    grep -q ",$unit,.*communication established" "$work/user/events.csv" || fail "$(cat "$work/user/events.csv")"
done
data=$work/home/.local/share/ups-host
ls "$data"/journal.sqlite "$data"/log_*.log >/dev/null
[ "$(ls "$work/user")" = events.csv ] || fail "the host left files where it was started: $(ls "$work/user")"

cp "$db/dev.ini" "$work/dev.ini"
debian --install "${packages[@]}"
debian --remove ups-host-tools vek5m-10-30k-plugin
cmp "$db/dev.ini" "$work/dev.ini"
touch "$db/dev.ini.lock"
debian --purge ups-host-tools vek5m-10-30k-plugin
list_tree | diff "$work/before" - || fail "remains after the packages were purged"
