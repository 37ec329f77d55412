#!/usr/bin/env bash
# in-namespace.sh PROGRAM: runs the test program in network namespaces made for it, with a Wine prefix of its own, and
# hands it what the kernel says of them: ZELK_E2E_FACTS names a JSON file. Nothing of it is left behind. Exit code 77,
# with the reason, where the machine does not allow it.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/wine-env.sh"
. "$zelk_top/scripts/namespaces.sh"

name=zelk-e2e-$$
export WINEPREFIX=$zelk_base_prefix-$name
export ZELK_WINE_TIMEOUT=100
export ZELK_E2E_FACTS=$WINEPREFIX.json

# shellcheck disable=SC2317 # it is the trap's
clean_up() {
    trap - EXIT INT TERM HUP
    set +e
    [ ! -d "$WINEPREFIX" ] || wine_server_end
    namespaces_remove "$name" "$name-far" "$name-bare"
    rm -rf -- "$WINEPREFIX" "$WINEPREFIX".*
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

namespaces_require
namespace_servers "$name" 192.0.2.53 2001:db8::53
namespaces_make "$name" "$name-far" "$name-bare"

# add_link NAME HARDWARE-ADDRESS STATE [ADDRESS/LENGTH ...]: its other end goes out of sight.
add_link() {
    namespace_link "$name" "$1" "$name-far" "$1p" address "$2"
    ip -n "$name" link set "$1" "$3"
    local link=$1
    shift 3
    for address in "$@"; do
        ip -n "$name" addr add "$address" dev "$link" nodad
    done
}
add_link lan0 02:00:5e:10:00:0a up 192.0.2.10/24 10.77.0.5/16 2001:db8::10/64 fe80::10/64
add_link lan1 02:ab:cd:ef:ff:01 down 198.51.100.2/25
add_link lan2 06:00:00:00:00:02 up 203.0.113.7/32 fd00:1:2::7/128
# add_route DESTINATION LINK METRIC [GATEWAY]: Wine reads metrics of two digits wrongly.
add_route() {
    ip -n "$name" route add "$1" ${4:+via "$4"} dev "$2" metric "$3"
}
add_route default lan0 5 192.0.2.1
add_route default lan0 9 10.77.0.1
add_route 198.18.0.0/15 lan0 1 10.77.255.254
add_route 198.18.0.0/15 lan2 2
add_route 203.0.113.200/32 lan2 3

wine_prefix_make "$zelk_base_prefix"
wine_prefix_make

# The same program under a name for which Wine plays an older system.
older=$WINEPREFIX.older/zelk_nm_e2e_tests_5_2.exe
mkdir -p "${older%/*}/Logfiles"
cp -- "$1" "$older"
cp -P -- "$(dirname -- "$1")"/{ZELK_NM.DLL,golden} "${older%/*}" # the texts are a link
"$zelk_top/scripts/wine-run.sh" reg add "HKCU\\Software\\Wine\\AppDefaults\\${older##*/}" /v Version /d winxp64 /f >/dev/null

# run_in NAMESPACE PROGRAM ARGUMENTS: the view of the network is that of the namespace in which the server starts.
run_in() {
    local namespace=$1 rc=0 vista=true
    shift
    [ "$1" != "$older" ] || vista=false
    wine_server_end
    printf '{"links": %s, "vista": %s}' "$(ip -n "$namespace" -json addr)" $vista >"$ZELK_E2E_FACTS"
    # In the background, so that a signal is heeded at once.
    ip netns exec "$namespace" "$zelk_top/scripts/wine-run.sh" "$@" </dev/null &
    wait $! || rc=$?
    return $rc
}
failed=0
answers=$(dirname -- "$1")/answers
rm -rf -- "$answers"
run_in "$name" "$@" --gtest_filter='Tables.*:Machine.*:ZelkctlFinds.*:ZelkctlVerbs.*' || failed=1
run_in "$name" "$older" --gtest_filter='Tables.*:Machine.*' || failed=1
run_in "$name" "$@" --gtest_filter='*Changes.*' || failed=1 # the last there: the links are no longer as made
run_in "$name-bare" "$@" --gtest_filter='LoopbackOnly.*' || failed=1
"$zelk_top/tests/cli/validate-answers.py" "$answers" || failed=1
exit $failed
