# shellcheck shell=bash
# To be sourced after wine-env.sh. What tests share that have a machine in a network namespace with its own Wine prefix.

namespace_skip() {
    echo "skipped: $1"
    exit 77
}

# Ends the script, with the reason, where the machine does not allow it.
namespaces_require() {
    [ "$(id -u)" -eq 0 ] || namespace_skip "only root may make network namespaces"
    command -v ip >/dev/null || namespace_skip "there is no ip command"
    [ -e /proc/net/if_inet6 ] || namespace_skip "the kernel has no IPv6"
}

namespaces_make() {
    local namespace
    for namespace in "$@"; do
        ip netns add "$namespace" 2>/dev/null || namespace_skip "no network namespace can be made here"
        ip -n "$namespace" link set lo up
    done
    ip netns exec "$1" true 2>/dev/null || namespace_skip "no program can be run in a network namespace here"
}

# Windows keeps the other addresses of a network when the first one goes.
namespace_keep_addresses() {
    ip netns exec "$1" sh -c 'echo 1 >/proc/sys/net/ipv4/conf/all/promote_secondaries' ||
        namespace_skip "the kernel's settings cannot be changed here"
}

# Servers of the namespaces, which see the file only when it is there before them.
namespace_servers() {
    local server
    mkdir -p "/etc/netns/$1"
    for server in "${@:2}"; do
        echo "nameserver $server"
    done >"/etc/netns/$1/resolv.conf"
}

# namespace_link NAMESPACE LINK FAR-NAMESPACE FAR-LINK [ip-link arguments]: both ends are up, without addresses of their
# own making, which would come some time later.
namespace_link() {
    ip -n "$1" link add "$2" "${@:5}" type veth peer name "$4" netns "$3" 2>/dev/null ||
        namespace_skip "no veth link can be made here"
    ip -n "$1" link set "$2" addrgenmode none
    ip -n "$3" link set "$4" addrgenmode none
    ip -n "$3" link set "$4" up
    ip -n "$1" link set "$2" up
}

namespaces_remove() {
    local namespace
    for namespace in "$@"; do
        ip netns del "$namespace" 2>/dev/null || true
        rm -rf -- "/etc/netns/$namespace"
    done
    rmdir /etc/netns 2>/dev/null || true # only when nothing else is in it
}

# wine_commands_stand_in STAND-IN DLL: it answers for the system's commands in the prefix. Wine prefers its own unless
# told otherwise. The DLL is for a stand-in from whose build nothing unused was left out.
wine_commands_stand_in() {
    local command system=$WINEPREFIX/drive_c/windows/system32
    for command in netsh route ipconfig; do
        rm -f -- "$system/$command.exe" # a link to that of the prefix that this one was copied from
        cp -- "$1" "$system/$command.exe"
    done
    cp -- "$2" "$system"
    # A service has the variables of the machine.
    "$zelk_top/scripts/wine-run.sh" reg add 'HKLM\System\CurrentControlSet\Control\Session Manager\Environment' \
        /v ZELK_UNIX_FOLDER /d "$ZELK_UNIX_FOLDER" /f >/dev/null
}
wine_commands_overrides="$WINEDLLOVERRIDES;netsh.exe,route.exe,ipconfig.exe=n"
