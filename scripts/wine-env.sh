# shellcheck shell=bash
# To be sourced. Gives every script the same private Wine: its environment, its prefix and its server.
# WINEPREFIX, WINEDEBUG and ZELK_WINE_LINGER can be set by the caller.

zelk_top=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
zelk_wine_home=${ZELK_WINE_HOME:-/usr/lib/wine}
zelk_base_prefix=$zelk_top/build/wine

export WINEPREFIX=${WINEPREFIX:-$zelk_base_prefix}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEARCH=win64
export WINELOADER=$zelk_wine_home/wine64
export WINESERVER=$zelk_wine_home/wineserver64
# No offers to download mono or gecko, no entries in the user's menus.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=;winemenubuilder.exe=d}
# Wine takes the encoding of its arguments from the locale; every machine has this one.
export LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY

# Before a command that starts Wine. The kernel places the heap of a program at random. That of Wine's loader, which lies at
# a fixed address, covers once in some 8,000 starts the page that Wine shares with every process, and the program then
# ends with 1 and says nothing. What a program starts has the same layout.
zelk_layout=()
if setarch -R true 2>/dev/null; then
    zelk_layout=(setarch -R)
fi

# A complete prefix keeps the registry that it had before its first use: copies are made of that, because the server may
# write what a running test has set for a while.
wine_prefix_complete() { [ -e "${1:-$WINEPREFIX}/.zelk-registry" ]; }

# wine_server_start [SECONDS it stays without a client; "": until it is ended]. All streams are redirected because the
# server, and the services that the first client starts, keep theirs: inside a pipe they would hold the pipe open long
# after the program's end.
wine_server_start() {
    local rc=0
    "$WINESERVER" "-p${1-${ZELK_WINE_LINGER:-3}}" </dev/null >/dev/null 2>&1 || rc=$?
    case $rc in
        0)
            "${zelk_layout[@]}" timeout -k 5 60 "$WINELOADER" hostname </dev/null >/dev/null 2>&1 || {
                echo "Wine starts no program in $WINEPREFIX" >&2
                return 1
            }
            ;;
        2) ;; # there is one already
        *) echo "the Wine server could not be started in $WINEPREFIX" >&2; return 1 ;;
    esac
}

wine_server_wait() { "$WINESERVER" -w </dev/null >/dev/null 2>&1 || true; }

# Ends the server of the prefix and with it every program that still runs there.
wine_server_end() {
    "$WINESERVER" -k </dev/null >/dev/null 2>&1 || true
    wine_server_wait
}

# Makes the prefix once. The mark comes last, so that one left half-made is made again.
wine_prefix_make() (
    export WINEPREFIX=${1:-$WINEPREFIX}
    wine_prefix_complete && exit 0
    mkdir -p -- "$(dirname -- "$WINEPREFIX")"
    exec 8>"$WINEPREFIX.lock"
    flock 8
    wine_prefix_complete && exit 0
    if [ -d "$WINEPREFIX" ]; then
        wine_server_end 8>&-
        rm -rf -- "$WINEPREFIX"
    fi
    trap 'wine_server_end 8>&-' EXIT
    if [ "$WINEPREFIX" != "$zelk_base_prefix" ] && wine_prefix_complete "$zelk_base_prefix"; then
        # Windows's own files are links: they are 700 MB, and nobody writes them. The registry has to be its own.
        mkdir -p -- "$WINEPREFIX"
        cp -al -- "$zelk_base_prefix"/{drive_c,dosdevices} "$WINEPREFIX" 2>/dev/null ||
            cp -a -- "$zelk_base_prefix"/{drive_c,dosdevices} "$WINEPREFIX" # another file system
        cp -a -- "$zelk_base_prefix"/.zelk-registry/*.reg "$zelk_base_prefix/.update-timestamp" "$WINEPREFIX"
    else
        echo "making the Wine prefix ..." >&2
        mkdir -p -- "$WINEPREFIX"
        {
            # A crash would otherwise start a debugger that waits for somebody.
            "$WINESERVER" -p60 </dev/null &&
                timeout -k 5 300 "$WINELOADER" wineboot -i </dev/null &&
                timeout -k 5 60 "$WINELOADER" reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' \
                    /v Debugger /d '' /f </dev/null
        } 8>&- >"$WINEPREFIX.log" 2>&1 || {
            echo "the Wine prefix could not be made:" >&2
            tail -n 20 "$WINEPREFIX.log" >&2
            exit 1
        }
    fi
    # The server writes the registry files when it ends; only then is the prefix whole.
    wine_server_end 8>&-
    trap - EXIT
    mkdir -- "$WINEPREFIX/.zelk-registry.new"
    cp -a -- "$WINEPREFIX"/*.reg "$WINEPREFIX/.zelk-registry.new"
    mv -- "$WINEPREFIX/.zelk-registry.new" "$WINEPREFIX/.zelk-registry"
)
