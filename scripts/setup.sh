#!/usr/bin/env bash
# setup.sh [test|check|coverage]: installs what a Debian machine lacks for building, with "test" also for the tests, with
# "check" for the gates beside them, with "coverage" for counting what the tests reach, and makes the private Wine prefix.
# With nothing to do it takes milliseconds and says nothing.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/wine-env.sh"

# package:file that shows it
needed=(
    cmake:/usr/bin/cmake
    ninja-build:/usr/bin/ninja
    gcc-mingw-w64-x86-64-posix:/usr/bin/x86_64-w64-mingw32-gcc-posix
    g++-mingw-w64-x86-64-posix:/usr/bin/x86_64-w64-mingw32-g++-posix
    gfortran-mingw-w64-x86-64-posix:/usr/bin/x86_64-w64-mingw32-gfortran-posix
    binutils-mingw-w64-x86-64:/usr/bin/x86_64-w64-mingw32-windres
    mingw-w64-x86-64-dev:/usr/x86_64-w64-mingw32/include/iphlpapi.h
    wine:/usr/bin/wine
    wine64:/usr/lib/wine/wine64
    googletest:/usr/src/googletest/googlemock/CMakeLists.txt
    libcli11-dev:/usr/include/CLI/CLI.hpp
    nlohmann-json3-dev:/usr/include/nlohmann/json.hpp
    libspdlog-dev:/usr/include/spdlog/spdlog.h
    libfmt-dev:/usr/include/fmt/core.h
    doxygen:/usr/bin/doxygen
    iproute2:/sbin/ip
    util-linux:/usr/bin/flock
    pkgconf:/usr/bin/pkg-config
    python3-jsonschema:/usr/lib/python3/dist-packages/jsonschema/__init__.py
    ansible-core:/usr/bin/ansible-playbook
    ansible-lint:/usr/bin/ansible-lint
    openssh-client:/usr/bin/sftp
    openssh-server:/usr/sbin/sshd
)
if [ "${1:-}" = test ]; then
    needed+=(chromium:/usr/bin/chromium) # as large as all the others together
fi
if [ "${1:-}" = check ] || [ "${1:-}" = coverage ]; then
    needed+=(
        clang-16:/usr/bin/clang++-16
        lld-16:/usr/bin/ld.lld-16
        libclang-rt-16-dev:/usr/lib/llvm-16/lib/clang/16/lib/linux/libclang_rt.fuzzer-x86_64.a
    )
fi
if [ "${1:-}" = coverage ]; then
    needed+=(llvm-16:/usr/bin/llvm-cov-16)
fi
if [ "${1:-}" = check ]; then
    needed+=(
        clang-tidy-16:/usr/bin/clang-tidy-16
        clang-format-14:/usr/bin/clang-format-14
        cppcheck:/usr/bin/cppcheck
        git:/usr/bin/git
        python3-minimal:/usr/bin/python3
        python3-pyflakes:/usr/lib/python3/dist-packages/pyflakes/__init__.py
    )
fi

missing=()
for entry in "${needed[@]}"; do
    [ -e "${entry#*:}" ] || missing+=("${entry%%:*}")
done

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

apt() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300 \
        -o Dpkg::Use-Pty=0 "$@" </dev/null >&2
}

if [ ${#missing[@]} -gt 0 ]; then
    fail() {
        echo "setup: $1" >&2
        echo "setup: these packages are needed: ${missing[*]}" >&2
        exit 1
    }
    command -v apt-get >/dev/null || fail "no apt-get here; install them by hand"
    [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null || fail "neither root nor sudo"
    echo "setup: installing ${missing[*]}" >&2
    # One unreachable source need not matter; the installation tells.
    apt update || echo "setup: apt-get update failed, going on with the lists at hand" >&2
    # The tests start servers of their own. This file keeps the system's from being started as well.
    if [ ! -e /usr/sbin/sshd ]; then
        as_root mkdir -p /etc/ssh
        as_root touch /etc/ssh/sshd_not_to_be_run
    fi
    apt install -y --no-install-recommends "${missing[@]}" || fail "apt-get could not install them"
    for entry in "${needed[@]}"; do
        [ -e "${entry#*:}" ] || fail "${entry%%:*} is installed but ${entry#*:} is not there"
    done
fi

wine_prefix_make "$zelk_base_prefix"
