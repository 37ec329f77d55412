#!/usr/bin/env bash
# start-host.sh NAME SSHD...: starts Wine and the SSH server in the host's namespace, where the machine has that name.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/wine-env.sh"
hostname "$1"
wine_server_start "" # it stays: sessions come and go
exec "${zelk_layout[@]}" "${@:2}" </dev/null >/dev/null 2>&1
