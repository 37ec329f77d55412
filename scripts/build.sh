#!/usr/bin/env bash
# build.sh PRESET [TARGET ...]: configures when needed and builds; everything goes to stderr, nothing when up to date.
set -euo pipefail
cd -P -- "$(dirname -- "${BASH_SOURCE[0]}")/.."
preset=$1
shift
tree=build/$preset

mkdir -p "$tree"
exec 9>"$tree/.lock" # two builds in one tree would spoil each other
flock 9
exec </dev/null >&2

# build.ninja runs CMake again by itself when a CMake file changes; a tree that was copied from elsewhere starts anew.
if [ ! -e "$tree/build.ninja" ] || ! grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$tree/CMakeCache.txt"; then
    echo "configuring $preset ..."
    rm -rf "${tree:?}"/*
    cmake --preset "$preset" -Wno-dev >"$tree/configure.log" 2>&1 || {
        cat "$tree/configure.log"
        exit 1
    }
fi

# Ninja's progress becomes one line, and none when there is nothing to do; what the tools say is passed on.
ninja -C "$tree" "$@" 2>&1 | {
    announced=
    while IFS= read -r line; do
        case $line in
            '['*'Re-checking globbed'* | '['*'Dating the build' | 'ninja: no work'* | 'ninja: Entering'* | '-- '*) ;;
            '['[0-9]*/*']'*)
                [ -n "$announced" ] || echo "building $preset ..."
                announced=1
                ;;
            *) printf '%s\n' "$line" ;;
        esac
    done
}
