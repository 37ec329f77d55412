#!/usr/bin/env bash
# in-namespace.sh PROGRAM: runs the test program in a network namespace made for it, with a Wine prefix of its own whose
# system directory holds the stand-in for netsh that lies in the folder stand_ins beside the program. Nothing of it is
# left behind. Exit code 77, with the reason, where the machine does not allow it.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/wine-env.sh"

name=zelk-apply-$$
export WINEPREFIX=$zelk_base_prefix-$name
export ZELK_UNIX_FOLDER=$WINEPREFIX # where the stand-in leaves the output of commands
export WINEDLLOVERRIDES="$WINEDLLOVERRIDES;netsh.exe,route.exe,ipconfig.exe=n"

skip() {
    echo "skipped: $1"
    exit 77
}

# shellcheck disable=SC2317 # it is the trap's
clean_up() {
    trap - EXIT INT TERM HUP
    set +e
    [ ! -d "$WINEPREFIX" ] || wine_server_end
    ip netns del "$name" 2>/dev/null
    ip netns del "$name-far" 2>/dev/null
    rm -rf -- "$WINEPREFIX" "$WINEPREFIX".* "/etc/netns/$name"
    rmdir /etc/netns 2>/dev/null # only when nothing else is in it
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

[ "$(id -u)" -eq 0 ] || skip "only root may make network namespaces"
command -v ip >/dev/null || skip "there is no ip command"
[ -e /proc/net/if_inet6 ] || skip "the kernel has no IPv6"

mkdir -p "/etc/netns/$name" # before the namespace, which sees the file from the start
: >"/etc/netns/$name/resolv.conf"
for namespace in "$name" "$name-far"; do
    ip netns add "$namespace" 2>/dev/null || skip "no network namespace can be made here"
done
ip netns exec "$name" true 2>/dev/null || skip "no program can be run in a network namespace here"
# Windows keeps the other addresses of a network when the first one goes.
ip netns exec "$name" sh -c 'echo 1 >/proc/sys/net/ipv4/conf/all/promote_secondaries' ||
    skip "the kernel's settings cannot be changed here"
ip -n "$name" link set lo up
for link in lan0 lan1; do
    ip -n "$name" link add $link type veth peer name ${link}p 2>/dev/null || skip "no veth link can be made here"
    ip -n "$name" link set ${link}p netns "$name-far"
    ip -n "$name-far" link set ${link}p up
    ip -n "$name" link set $link addrgenmode none
    ip -n "$name" link set $link up
done

wine_prefix_make "$zelk_base_prefix"
wine_prefix_make
system=$WINEPREFIX/drive_c/windows/system32
for command in netsh route ipconfig; do
    rm -f -- "$system/$command.exe" # a link to that of the prefix that this one was copied from
    cp -- "$(dirname -- "$1")/stand_ins/netsh.exe" "$system/$command.exe"
done
cp -- "$(dirname -- "$1")/ZELK_NM.DLL" "$system" # for a stand-in from whose build nothing unused was left out

# The same program under a name for which Wine plays an older system.
older=$WINEPREFIX.older/zelk-apply-older.exe
mkdir -p "${older%/*}"
cp -- "$1" "$older"
cp -- "$(dirname -- "$1")/ZELK_NM.DLL" "${older%/*}"
"$zelk_top/scripts/wine-run.sh" reg add "HKCU\\Software\\Wine\\AppDefaults\\${older##*/}" /v Version /d winxp64 /f >/dev/null
# A service has the variables of the machine.
"$zelk_top/scripts/wine-run.sh" reg add 'HKLM\System\CurrentControlSet\Control\Session Manager\Environment' \
    /v ZELK_UNIX_FOLDER /d "$ZELK_UNIX_FOLDER" /f >/dev/null
wine_server_end # the view of the network is that of the namespace in which the server starts

# In the background, so that a signal is heeded at once.
run() {
    local rc=0
    ip netns exec "$name" "$zelk_top/scripts/wine-run.sh" "$@" </dev/null &
    wait $! || rc=$?
    return $rc
}
failed=0
run "$1" --gtest_filter=-ApplyBeforeVista.* "${@:2}" || failed=1
ZELK_GENERATION=5 run "$older" --gtest_filter='ApplyBeforeVista.*' || failed=1
exit $failed
