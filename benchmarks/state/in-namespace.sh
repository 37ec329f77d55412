#!/usr/bin/env bash
# in-namespace.sh PROGRAM ROUNDS: runs the program on 8 and on 64 adapters that are made for it, in a network namespace
# with a Wine prefix of its own. Nothing of it is left behind.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/wine-env.sh"

name=zelk-bench-$$
export WINEPREFIX=$zelk_base_prefix-$name
times=$WINEPREFIX.times

# shellcheck disable=SC2317 # it is the trap's
clean_up() {
    trap - EXIT INT TERM HUP
    set +e
    [ ! -d "$WINEPREFIX" ] || wine_server_end
    ip netns del "$name" 2>/dev/null
    rm -rf -- "$WINEPREFIX" "$WINEPREFIX".*
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

if [ "$(id -u)" -ne 0 ] || ! ip netns add "$name" 2>/dev/null; then
    echo "no network namespace can be made here: readings of 8 and 64 adapters are not measured" >&2
    exit 0
fi
wine_prefix_make "$zelk_base_prefix"
wine_prefix_make

# Both ends of a link stay here, each an adapter with an address of either family.
made=0
make_adapters_up_to() {
    local end
    while [ "$made" -lt "$1" ]; do
        ip -n "$name" link add "lan$made" type veth peer name "lan$((made + 1))"
        for end in "$made" "$((made + 1))"; do
            ip -n "$name" addr add "10.77.$end.1/24" dev "lan$end"
            ip -n "$name" addr add "fd00:77:$end::1/64" dev "lan$end" nodad
            ip -n "$name" link set "lan$end" up
        done
        made=$((made + 2))
    done
}

rc=0
for count in 8 64; do
    make_adapters_up_to "$count"
    wine_server_end
    ip netns exec "$name" "$zelk_top/scripts/wine-run.sh" "$1" "$2" "Z:$times" </dev/null || rc=1
done
exit $rc
