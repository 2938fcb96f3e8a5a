#!/usr/bin/env bash
# Uses the kit as a host developer would: tests/package/consume.sh KIT find_package|pkg-config C-COMPILER C++-COMPILER
#
# Copies the kit to a folder elsewhere, builds its examples in C and in C++ with nothing else, lays them out with the
# library and the simulator of the kit in a Wine prefix of its own, and runs them.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"

kit_built=$1 way=$2 cc=$3 cxx=$4

finish()
{
    local status=$?
    wine_session_end
    [ -z "${work:-}" ] || rm -rf "$work"
    exit $status
}
trap finish EXIT

work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-kit.XXXXXX")
# A path that quoting mistakes would show at; pkg-config's own output has no quotes.
kit="$work/a kit"
[ "$way" = find_package ] || kit=$work/kit
cp -r "$kit_built" "$kit"
hosts=$work/hosts

by_find_package()
{
    printf 'set(%s)\n' 'CMAKE_SYSTEM_NAME Windows' "CMAKE_C_COMPILER \"$cc\"" "CMAKE_CXX_COMPILER \"$cxx\"" \
        'CMAKE_EXE_LINKER_FLAGS_INIT -static' >"$work/toolchain.cmake"
    cmake -G Ninja -S "$kit/examples" -B "$hosts" -DCMAKE_TOOLCHAIN_FILE="$work/toolchain.cmake" \
        -DCMAKE_BUILD_TYPE=Release -DOrlindex_DIR="$kit/lib/cmake/Orlindex"
    cmake --build "$hosts"
}

by_pkg_config()
{
    export PKG_CONFIG_LIBDIR=$kit/lib/pkgconfig
    [ "$(pkg-config --modversion Orlindex)" = 1.11.13.3 ] || fail "pkg-config gives another version"
    local newer
    for newer in 1.11.13.4 1.12 2.0; do
        if pkg-config --atleast-version "$newer" Orlindex; then fail "pkg-config takes the kit for version $newer"; fi
    done
    local flags libraries
    read -ra flags < <(pkg-config --cflags Orlindex)
    read -ra libraries < <(pkg-config --libs Orlindex)
    mkdir "$hosts"
    "$cc" -static "${flags[@]}" "$kit/examples/c_host/main.c" -o "$hosts/c_host.exe" "${libraries[@]}"
    "$cxx" -static -std=c++17 "${flags[@]}" "$kit/examples/cpp_host/main.cpp" -o "$hosts/cpp_host.exe" "${libraries[@]}"
}

case $way in
    find_package) by_find_package ;;
    pkg-config) by_pkg_config ;;
    *) fail "unknown way: $way" ;;
esac

# The server application is found beside the host.
cp "$kit/bin/Orlindex.dll" "$hosts/"
find "$kit/simulator" -maxdepth 1 -type f -exec cp -t "$hosts" {} +
wine_session_begin
for host in c_host cpp_host; do
    say "== $host"
    run_windows "$hosts/$host.exe" | tee "$work/$host.log"
    # A host that could not sign in says so, and some end well all the same.
    grep -qi 'login  *IdSuccess' "$work/$host.log" || fail "$host did not sign in"
done
