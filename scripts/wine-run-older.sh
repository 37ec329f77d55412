#!/usr/bin/env bash
# wine-run-older.sh PROGRAM [ARGUMENTS]: runs a copy of the program, its name with "_5_2" added, for which Wine plays
# Windows 5.2, the last before Vista.
set -euo pipefail
here=$(dirname -- "${BASH_SOURCE[0]}")
[ $# -gt 0 ] || { echo "usage: wine-run-older.sh PROGRAM [ARGUMENTS]" >&2; exit 2; }

older=${1%.exe}_5_2.exe
ln -f -- "$1" "$older"
shift
"$here/wine-run.sh" reg add "HKCU\\Software\\Wine\\AppDefaults\\${older##*/}" /v Version /d winxp64 /f >/dev/null
exec "$here/wine-run.sh" "$older" "$@"
