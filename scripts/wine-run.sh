#!/usr/bin/env bash
# wine-run.sh PROGRAM [ARGUMENTS]: runs a Windows program in the private Wine prefix; streams and exit code are its own.
# ZELK_WINE_TIMEOUT: seconds until it is ended (0: never), exit code 124 then.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/wine-env.sh"
[ $# -gt 0 ] || { echo "usage: wine-run.sh PROGRAM [ARGUMENTS]" >&2; exit 2; }

# A prefix of the caller's own making is taken as it is.
if [ "$WINEPREFIX" = "$zelk_base_prefix" ] || [ ! -e "$WINEPREFIX/system.reg" ]; then
    wine_prefix_make
fi
wine_server_start
exec "${zelk_layout[@]}" timeout --foreground -v -k 5 "${ZELK_WINE_TIMEOUT:-600}" "$WINELOADER" "$@"
