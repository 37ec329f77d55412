#!/usr/bin/env bash
# in-namespace.sh PROGRAM: runs the test program in a network namespace made for it, with a Wine prefix of its own whose
# system directory holds the stand-in for netsh that lies in the folder stand_ins beside the program. Nothing of it is
# left behind. Exit code 77, with the reason, where the machine does not allow it.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/wine-env.sh"
. "$zelk_top/scripts/namespaces.sh"

name=zelk-apply-$$
export WINEPREFIX=$zelk_base_prefix-$name
export ZELK_UNIX_FOLDER=$WINEPREFIX # where the stand-in leaves the output of commands
export WINEDLLOVERRIDES=$wine_commands_overrides

# shellcheck disable=SC2317 # it is the trap's
clean_up() {
    trap - EXIT INT TERM HUP
    set +e
    [ ! -d "$WINEPREFIX" ] || wine_server_end
    namespaces_remove "$name" "$name-far"
    rm -rf -- "$WINEPREFIX" "$WINEPREFIX".*
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

namespaces_require
namespace_servers "$name"
namespaces_make "$name" "$name-far"
namespace_keep_addresses "$name"
for link in lan0 lan1; do
    namespace_link "$name" $link "$name-far" ${link}p
done

wine_prefix_make "$zelk_base_prefix"
wine_prefix_make
wine_commands_stand_in "$(dirname -- "$1")/stand_ins/netsh.exe" "$(dirname -- "$1")/ZELK_NM.DLL"

wine_server_end # the view of the network is that of the namespace in which the server starts

# In the background, so that a signal is heeded at once.
rc=0
ip netns exec "$name" "$zelk_top/scripts/wine-run.sh" "$@" </dev/null &
wait $! || rc=$?
exit $rc
