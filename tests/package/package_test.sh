#!/usr/bin/env bash
# package_test.sh CASE: one case about what is installed and packed. The environment says SOURCE_DIR, BUILD_DIR, CXX.
set -euo pipefail
work=$BUILD_DIR/tests/package/$1
tree=$work/moved/zelk_nm
doc=$tree/share/doc/zelk_nm

fail() {
    echo "$*" >&2
    exit 1
}

# It moves after the installation, for it must not know where it was installed.
install_tree() {
    cmake --install "$BUILD_DIR" --prefix "$work/installed" "$@" >/dev/null
    mkdir "$work/moved"
    mv "$work/installed" "$tree"
}

same() { # WHAT EXPECTED ACTUAL
    diff <(printf '%s\n' "$2") <(printf '%s\n' "$3") || fail "$1: lines with > were not expected"
}

files_in() (cd "$1" && find . -mindepth 1 | sed 's,^\./,,' | LC_ALL=C sort)

# The library answers, on a machine without adapters too.
runs_and_lists_adapters() { # PROGRAM
    local output line='^\{[0-9A-F-]{36}\}  |^No adapters; '
    output=$("$SOURCE_DIR/scripts/wine-run.sh" "$1" 2>&1 | tr -d '\r') || [[ $output == "No adapters"* ]] ||
        fail "$1 failed: $output"
    [ -n "$output" ] || fail "$1 says nothing"
    ! grep -vE "$line" <<<"$output" || fail "$1 says something else"
}

# The C interface answers, with the exit code of the tool.
refuses_a_bad_state() { # PROGRAM
    local output rc=0
    echo '{"adapter": []}' >"$work/bad.json"
    output=$("$SOURCE_DIR/scripts/wine-run.sh" "$1" "$work/bad.json" 2>&1) || rc=$?
    [[ $rc -eq 2 && $output == *'/adapter: is not a known key'* ]] || fail "$1 says, with exit code $rc: $output"
}

find_package() {
    install_tree
    cmake -S "$doc/examples" -B "$work/build" -G Ninja -D zelk_nm_DIR="$tree/lib/cmake/zelk_nm" \
        --toolchain "$SOURCE_DIR/cmake/mingw-w64-x86_64.cmake"
    cmake --build "$work/build"
    runs_and_lists_adapters "$work/build/list_adapters.exe"
    refuses_a_bad_state "$work/build/apply_state.exe"
    ! cmake -S "$doc/examples" -B "$work/other" -G Ninja -D zelk_nm_DIR="$tree/lib/cmake/zelk_nm" -D COMPONENTS=other \
        --toolchain "$SOURCE_DIR/cmake/mingw-w64-x86_64.cmake" 2>/dev/null >&2 || fail "a component that does not exist is found"
}

pkg_config() {
    install_tree
    export PKG_CONFIG_LIBDIR=$tree/lib/pkgconfig
    # shellcheck disable=SC2046 # several words
    "$CXX" -static "$doc/examples/list_adapters.cpp" $(pkg-config --cflags --libs zelk_nm) -o "$work/list_adapters.exe"
    cp "$tree"/bin/*.DLL "$work"
    runs_and_lists_adapters "$work/list_adapters.exe"
    # C by each compiler that is there.
    local compiler runtime
    runtime=$(dirname "$(x86_64-w64-mingw32-gcc-posix -print-libgcc-file-name)") # which the other compiler shares
    for compiler in x86_64-w64-mingw32-gcc-posix "clang-16 --target=x86_64-w64-mingw32 -fuse-ld=lld-16 -L$runtime"; do
        command -v "${compiler%% *}" >/dev/null || continue
        # shellcheck disable=SC2046,SC2086 # several words
        $compiler -static -std=c99 -Wall -Wextra -Wpedantic -Werror "$doc/examples/apply_state.c" \
            $(pkg-config --cflags --libs zelk_state) -o "$work/apply_state.exe"
        refuses_a_bad_state "$work/apply_state.exe"
    done
}

archives() {
    cpack -G ZIP --config "$BUILD_DIR/CPackConfig.cmake" -B "$work" >/dev/null
    local version name file part
    version=$(sed -n 's/^set(CPACK_PACKAGE_VERSION "\(.*\)")$/\1/p' "$BUILD_DIR/CPackConfig.cmake")
    name=zelk_nm-$version-win64
    same "the archives" "$name-symbols.zip"$'\n'"$name.zip" "$(cd "$work" && printf '%s\n' *.zip)"
    for part in "" -symbols; do
        mkdir "$work/unpacked$part"
        (cd "$work/unpacked$part" && cmake -E tar xf "../$name$part.zip")
    done

    same "the symbols" $'bin\nbin/ZELK_NM.DLL.debug\nbin/ZELK_STATE.DLL.debug\nbin/zelkctl.exe.debug' "$(files_in "$work/unpacked-symbols/$name")"
    tree=$work/unpacked/$name
    same "the programs" $'Logfiles\nZELK_NM.DLL\nZELK_STATE.DLL\nzelkctl.exe' "$(files_in "$tree/bin")"
    same "the headers" "$(cd "$SOURCE_DIR/include" && files_in . | grep -v ^zelk_common)" "$(files_in "$tree/include")"
    tar -xzOf "$tree/share/ansible/velmor-zelk-$version.tar.gz" bin/zelkctl.exe | cmp - "$tree/bin/zelkctl.exe"
    for file in lib/lib{ZELK_NM,ZELK_STATE}.dll.a lib/zelk_state.def lib/cmake/zelk_nm/zelk_nm-config.cmake \
        lib/pkgconfig/{zelk_nm,zelk_state}.pc \
        share/doc/zelk_nm/{README.md,LICENSE,zelk_nm.spdx.json,examples/list_adapters.cpp,docs/zelkctl.md,docs/api/index.html}; do
        [ -s "$tree/$file" ] || fail "$file is not in the archive"
    done
    ! grep -rlF -e "$SOURCE_DIR" -e "$BUILD_DIR" "$work"/unpacked* || fail "these name folders of the build machine"

    # What goes into a boot image is no more than it takes.
    tree=$work/moved/runtime
    install_tree --component runtime
    same "the run-time files" $'bin\nbin/Logfiles\nbin/ZELK_NM.DLL\nbin/zelkctl.exe' "$(files_in "$tree")"
    "$SOURCE_DIR/scripts/wine-run.sh" "$tree/bin/zelkctl.exe" --version >/dev/null
}

spdx() {
    install_tree
    cmake -D TREE="$tree" -P "$SOURCE_DIR/tests/package/check_spdx.cmake"
}

# Compiling all of the library twice takes minutes: a few sources stand for the rest, whose objects are taken as they are,
# unless ZELK_REBUILD_ALL is set.
build_library() { # FOLDER
    local objects=CMakeFiles/zelk_nm_objects.dir
    cmake -S "$SOURCE_DIR" -B "$1" -G Ninja -D CMAKE_BUILD_TYPE=Release -D BUILD_TESTING=OFF -Wno-dev \
        -D CMAKE_CXX_COMPILER_LAUNCHER= --toolchain "$SOURCE_DIR/cmake/mingw-w64-x86_64.cmake" >/dev/null
    cd "$1"
    if [ -n "${ZELK_REBUILD_ALL:-}" ]; then
        ninja zelk_nm
    else
        ninja $objects/src/{frame/module_version,support/values/string,tools/captured_command}.cpp.obj \
            CMakeFiles/zelk_nm.dir/src/{frame/zelk_nm.rc.res,support/platform/{exception_state,exit_functions,small_runtime}.cpp.obj}
        cp -rn "$BUILD_DIR/$objects" CMakeFiles
        mkdir -p bin lib
        eval "$(ninja -t commands -s bin/ZELK_NM.DLL)"
    fi
}

reproducible() {
    export SOURCE_DATE_EPOCH=1431691548
    local first=$work/first second=$work/second/in-a-deeper-folder file
    (build_library "$first")
    (build_library "$second")
    for file in bin/ZELK_NM.DLL bin/ZELK_NM.DLL.debug lib/libZELK_NM.dll.a; do
        cmp "$first/$file" "$second/$file"
    done
    cp "$BUILD_DIR/bin/zelkctl.exe" "$first/bin"
    "$SOURCE_DIR/scripts/wine-run.sh" "$first/bin/zelkctl.exe" --version | grep 'created on May 15 2015 at 12:05:48'
}

# What a build says of its date: the commit's when the tree is clean, its own when it is not.
dated() {
    local repository=$work/repository now
    mkdir "$repository"
    cp -r "$SOURCE_DIR/CMakeLists.txt" "$SOURCE_DIR/cmake" "$repository"
    cd "$repository"
    git init -q && git add .
    GIT_COMMITTER_DATE='@1431691548 +0000' git -c user.name=test -c user.email=test@localhost commit -q -m test
    unset SOURCE_DATE_EPOCH
    stamp() { cmake -D OUTPUT="$work/stamp.h" -P cmake/write_build_stamp.cmake && cat "$work/stamp.h"; }
    stamp | grep '"May 15 2015"' || fail "a clean tree does not carry the commit's date"
    now=$(date +%s)
    echo >>CMakeLists.txt
    (($(stamp | sed -n 's/.*EPOCH=//p') >= now)) || fail "changes carry the commit's date"
    touch -d @1431691548 "$work/stamp.h"
    stamp >/dev/null
    (($(stat -c %Y "$work/stamp.h") == 1431691548)) || fail "the same changes are dated twice"
    SOURCE_DATE_EPOCH=1431691549 stamp | grep 12:05:49 || fail "the environment's date is not taken"
}

rm -rf "$work"
mkdir -p "$work"
"$1"
rm -rf "$work" # only what failed is kept
