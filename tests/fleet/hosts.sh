#!/usr/bin/env bash
# hosts.sh up N FOLDER: makes N hosts that look from outside like Windows with OpenSSH, whose shell is PowerShell. Each
# is a network namespace with a Wine prefix of its own, stand-ins for the system's commands that change its kernel and
# its registry, and an sshd. Its adapter lan0 is on the controller's network, lan1 on another one. The folder gets
#   inventory.yml            the hosts host1 ... hostN, in the group zelk_hosts
#   controller               a script that runs a command in the controller's namespace, with the settings for Ansible
#   hosts/HOST/prefix        the Wine prefix
#   hosts/HOST/environment   lines NAME=VALUE for the programs of later sessions, such as ZELK_REFUSED for a stand-in;
#                            SESSION_ENDS=kill ends programs together with their session
#   hosts/HOST/hold          a text: programs of sessions whose command line holds it wait while the file is there
#   hosts/HOST/runs.jsonl    what ran in sessions, with begin and end
#   hosts/HOST/sshd.log      what its sshd says
# hosts.sh in HOST FOLDER COMMAND...: runs a command in the namespace of a host, with its Wine prefix.
# hosts.sh down FOLDER: ends all of it, also after a crash, and removes the folder.
# Exit code 77, with the reason, where the machine does not allow it.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd -P)
unset WINEPREFIX
. "$here/../../scripts/wine-env.sh"
. "$zelk_top/scripts/namespaces.sh"

tree=${ZELK_BUILD_TREE:-$zelk_top/build/release}
stand_in=$tree/tests/zelk_nm_apply_tests/stand_ins/netsh.exe
network=192.0.2 # the controller is 1, the first host 11
second=198.51.100
placeholder=254 # the host's number in the template
export WINEDLLOVERRIDES=$wine_commands_overrides

usage() {
    sed -n '2,/^set/{s/^# \{0,1\}//p}' "${BASH_SOURCE[0]}" >&2
    exit 2
}

# The names of two work trees, and of two folders, never meet.
use_folder() {
    folder=$(realpath -m -- "$1")
    mark=zelk-fleet-$(printf %s "$zelk_top" | sha256sum | cut -c1-6)-$(printf %s "$folder" | sha256sum | cut -c1-6)
    controller=$mark-controller
    sockets=/tmp/$mark # of the connections that stay open: their names may not be long
}

our_namespaces() { ip netns list | awk -v mark="$mark-" 'index($1, mark) == 1 { print $1 }'; }

prefix_of() { echo "$folder/hosts/$1/prefix"; }

# What Windows has written when an adapter is installed and configured. Adapter 2 is lan0, 3 is lan1.
adapter_settings() {
    local ip='HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\Tcpip\Parameters\Interfaces' guid
    local control='HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control'
    guid=$(printf '{%08X-0000-0000-0000-4E6574446576}' "$1")
    printf '\n[%s]\n"EnableDHCP"=dword:00000000\n"NameServer"="%s"\n' "$ip\\$guid" "$4"
    printf '"IPAddress"=%s\n"SubnetMask"=%s\n' "$(multi "$3.$placeholder")" "$(multi 255.255.255.0)"
    printf '"DefaultGateway"=%s\n"DefaultGatewayMetric"=%s\n' "$(multi "$5")" "$(multi "${5:+5}")"
    printf '\n[%s]\n"Name"="%s"\n' "$control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\$guid\\Connection" "$2"
}

# A list of one text, or of none, as a registry file has it.
multi() {
    printf 'hex(7):'
    [ -z "$1" ] || printf '%s\0' "$1" | od -An -v -tx1 | tr -d '\n' | sed 's/^ //;s/ /,/g;s/$/,/'
    printf 00
}

# Made once; the hosts are copies.
make_template() {
    export WINEPREFIX=$folder/template ZELK_UNIX_FOLDER=$folder/template
    wine_prefix_make
    wine_commands_stand_in "$stand_in" "$tree/bin/ZELK_NM.DLL"
    {
        printf 'REGEDIT4\n'
        adapter_settings 2 lan0 "$network" "$network.1" "$network.1"
        adapter_settings 3 lan1 "$second" "" ""
    } >"$folder/settings.reg"
    "$zelk_top/scripts/wine-run.sh" regedit /S "Z:$folder/settings.reg"
    wine_server_end
}

make_keys() {
    mkdir -m 700 -- "$folder/ssh" "$sockets"
    ssh-keygen -q -t ed25519 -N '' -C controller -f "$folder/ssh/controller"
    ssh-keygen -q -t ed25519 -N '' -C hosts -f "$folder/ssh/host"
    printf '%s.* %s' "$network" "$(<"$folder/ssh/host.pub")" >"$folder/ssh/known_hosts"
    cat >"$folder/ssh/config" <<END
Host *
  User root
  IdentityFile $folder/ssh/controller
  IdentitiesOnly yes
  UserKnownHostsFile $folder/ssh/known_hosts
  GlobalKnownHostsFile /dev/null
  StrictHostKeyChecking yes
  HashKnownHosts no
  CheckHostIP no
END
    mkdir -p /run/sshd # sshd wants it
}

make_controller() {
    namespaces_make "$controller"
    for bridge in lan backup; do
        ip -n "$controller" link add $bridge type bridge
        ip -n "$controller" link set $bridge addrgenmode none up
    done
    ip -n "$controller" addr add "$network.1/24" dev lan
    cat >"$folder/ansible.cfg" <<END
[defaults]
inventory = $folder/inventory.yml
home = $folder/ansible
collections_paths = $folder/collections
retry_files_enabled = False
[ssh_connection]
control_path_dir = $sockets
ssh_args = -F $folder/ssh/config -C -o ControlMaster=auto -o ControlPersist=60s
END
    cat >"$folder/controller" <<END
#!/bin/sh
export ANSIBLE_CONFIG='$folder/ansible.cfg' LC_ALL=C.UTF-8
exec ip netns exec $controller "\$@"
END
    chmod +x "$folder/controller"
}

# make_host NUMBER
make_host() {
    local host=host$1 namespace=$mark-host$1 number=$((10 + $1)) prefix
    prefix=$(prefix_of "$host")
    mkdir -p -- "$prefix"
    cp -al -- "$folder/template"/{drive_c,dosdevices,.zelk-registry} "$prefix"
    cp -a -- "$folder/template"/{*.reg,.update-timestamp} "$prefix"
    sed -i "s/\($network\|$second\)\.$placeholder\>/\1.$number/g; s|$folder/template|$prefix|g" "$prefix/system.reg"
    namespace_servers "$namespace" "$network.1"
    namespaces_make "$namespace"
    namespace_keep_addresses "$namespace"
    namespace_link "$namespace" lan0 "$controller" "lan-$1" index 2 address "$(printf '02:00:5e:00:%02x:00' "$1")"
    namespace_link "$namespace" lan1 "$controller" "backup-$1" index 3 address "$(printf '02:00:5e:00:%02x:01' "$1")"
    ip -n "$controller" link set "lan-$1" master lan
    ip -n "$controller" link set "backup-$1" master backup
    ip -n "$namespace" addr add "$network.$number/24" dev lan0
    ip -n "$namespace" addr add "$second.$number/24" dev lan1
    ip -n "$namespace" route add default via "$network.1" dev lan0 metric 5
    : >"$folder/hosts/$host/environment"
    cat >"$folder/hosts/$host/sshd_config" <<END
HostKey $folder/ssh/host
AuthorizedKeysFile $folder/ssh/controller.pub
AuthenticationMethods publickey
PermitRootLogin prohibit-password
UsePAM no
StrictModes no
PermitUserRC no
PidFile none
MaxStartups 100
Subsystem sftp sftp
ForceCommand exec "$here/session.py" "$folder/hosts/$host"
END
}

# In the namespace: the view of the network is that of the place in which Wine's server starts.
start_host() {
    local host=$1
    WINEPREFIX=$(prefix_of "$host") ip netns exec "$mark-$host" unshare --uts "$here/start-host.sh" "$host" \
        /usr/sbin/sshd -E "$folder/hosts/$host/sshd.log" -f "$folder/hosts/$host/sshd_config"
}

inventory() {
    local i
    cat <<END
zelk_hosts:
  vars:
    ansible_connection: ssh
    ansible_user: root
    ansible_shell_type: powershell
    ansible_remote_tmp: C:\\windows\\temp
  hosts:
END
    for ((i = 1; i <= $1; i++)); do
        printf '    host%d:\n      ansible_host: %s.%d\n      host_number: %d\n' \
            "$i" "$network" $((10 + i)) $((10 + i))
    done
}

up() {
    local i failed=0 started=()
    [[ ${1:-} =~ ^[1-9][0-9]*$ && $1 -le 200 && -n ${2:-} ]] || usage
    [ -e "$stand_in" ] || { echo "hosts.sh: $stand_in is missing; build apply_stand_in_netsh first" >&2; exit 1; }
    down "$2"
    namespaces_require
    mkdir -p -- "$folder"
    touch -- "$folder/.zelk-fleet"
    trap 'down "$folder"' EXIT
    trap 'exit 143' INT TERM HUP
    wine_prefix_make "$zelk_base_prefix"
    make_template
    make_keys
    make_controller
    for ((i = 1; i <= $1; i++)); do
        make_host "$i"
        start_host "host$i" &
        started+=($!)
    done
    for i in "${started[@]}"; do
        wait "$i" || failed=1
    done
    [ $failed -eq 0 ] || { echo "hosts.sh: a host does not start" >&2; exit 1; }
    inventory "$1" >"$folder/inventory.yml"
    trap - EXIT INT TERM HUP
}

# What runs in our namespaces is ours.
end_processes() {
    local namespace end=$((SECONDS + 10))
    for namespace in $(our_namespaces); do
        while ip netns pids "$namespace" | xargs -r kill -KILL 2>/dev/null; [ -n "$(ip netns pids "$namespace")" ]; do
            [ "$SECONDS" -lt $end ] || { echo "hosts.sh: a process in $namespace does not end" >&2; exit 1; }
            sleep 0.02
        done
    done
}

down() {
    local prefix namespace
    use_folder "$1"
    if [ -d "$folder" ] && [ ! -e "$folder/.zelk-fleet" ]; then
        rmdir -- "$folder" 2>/dev/null || { echo "hosts.sh: $folder holds something else" >&2; exit 1; }
    fi
    # The servers go first: what Wine runs goes with them.
    for prefix in "$folder"/template "$folder"/hosts/*/prefix; do
        if [ -d "$prefix" ]; then
            WINEPREFIX=$prefix wine_server_end &
        fi
    done
    wait
    end_processes
    # shellcheck disable=SC2046 # one word a namespace
    namespaces_remove $(our_namespaces)
    rm -rf -- "$folder" "$sockets" "/etc/netns/$mark"-*
    rmdir /etc/netns 2>/dev/null || true
}

run_in() {
    local host=$1
    export WINEPREFIX ZELK_UNIX_FOLDER
    WINEPREFIX=$(prefix_of "$host")
    ZELK_UNIX_FOLDER=$WINEPREFIX
    exec ip netns exec "$mark-$host" "${@:2}"
}

case ${1:-} in
    up) up "${2:-}" "${3:-}" ;;
    in) [ $# -ge 4 ] || usage; use_folder "$3"; run_in "$2" "${@:4}" ;;
    down) [ $# -eq 2 ] || usage; down "$2" ;;
    *) usage ;;
esac
