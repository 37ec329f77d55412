#!/usr/bin/env bash
# in-prefix.sh PROGRAM [ARGUMENT ...]: runs a Windows program in a copy of the tests' prefix that nobody else uses, from
# its own folder.
set -euo pipefail
top=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd -P)
name=$(basename -- "$1" .exe)
export WINEPREFIX=$top/build/wine-torture-$name
. "$top/scripts/wine-env.sh"
exec 6>"$WINEPREFIX.run" # a second run would meet this one's mutexes and end its server
flock 6
wine_prefix_make 6>&-
trap wine_server_end EXIT
wine_server_start 60 6>&-
cd -- "$(dirname -- "$1")"
export ZELK_WINE_TIMEOUT=${ZELK_WINE_TIMEOUT:-36000}
"$top/scripts/wine-run.sh" "$@" </dev/null 6>&-
