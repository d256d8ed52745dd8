#!/usr/bin/env bash
# Installs what is missing, builds, and passes all tests.
#   ./test.sh [--preset release|asan] [--slow] [CTEST OPTIONS...]
# --slow runs the tests labelled slow as well, as CI does.
set -euo pipefail
cd "$(dirname "$0")"

preset=release
slow=false
while [ $# -gt 0 ]; do
    case "$1" in
        --preset)
            preset=${2:-}
            shift 2 || { echo "test.sh: --preset needs a name: release or asan" >&2; exit 2; }
            ;;
        --slow) slow=true; shift ;;
        -h | --help) sed -n '2,4s/^# \{0,1\}//p' "$0"; exit 0 ;;
        *) break ;;
    esac
done
case "$preset" in
    release | asan) ;;
    *) echo "test.sh: no preset '$preset': use release or asan" >&2; exit 2 ;;
esac

scripts/install-deps.sh qttools5-dev-tools dpkg-dev file lintian # what tests of translations and packages run
scripts/build.sh "$preset"
label_options=(-LE slow)
[ "$slow" = false ] || label_options=()
exec ctest --preset "$preset" -j2 "${label_options[@]}" "$@"
