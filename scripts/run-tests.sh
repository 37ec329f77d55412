#!/usr/bin/env bash
# run-tests.sh PRESET [ctest arguments]: prepares the machine, builds the preset, and runs every test that it has. The
# last line counts the cases.
set -euo pipefail
cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.."
preset=$1
shift
exec </dev/null
unset WINEPREFIX
. scripts/wine-env.sh

tree=build/$preset
results=$tree/Testing/results.xml
rc=1
ctest=

finish() {
    trap - EXIT INT TERM HUP
    [ -z "$ctest" ] || kill "$ctest" 2>/dev/null || true
    wine_prefix_complete && wine_server_end
    scripts/count-tests.sh "$results" || rc=1
    exit "$rc"
}

mkdir -p "$tree"
exec 7>"$tree/.test-lock" # two runs would meet in the test programs' folders
flock 7
rm -f "$results"
trap finish EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

scripts/setup.sh test 7>&-
scripts/build.sh "$preset" 7>&-
# While others run in prefixes of their own, this one's server has nothing to do for minutes.
wine_server_start 900 7>&-
# Two at a time: the longest tests have a registry and a network of their own, and mostly wait. Whole outputs are kept:
# the cases are counted from them. It runs beside the script so that a signal is heeded at once.
ctest --test-dir "$tree" --parallel 2 --output-on-failure --no-tests=error --output-junit "$PWD/$results" \
    --test-output-size-passed 100000000 --test-output-size-failed 100000000 "$@" 7>&- &
ctest=$!
wait "$ctest" && rc=0 || rc=$?
ctest=
