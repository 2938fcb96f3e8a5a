#!/usr/bin/env bash
# Uses the kit as a host developer would: tests/package/consume.sh KIT find_package|pkg-config C-COMPILER C++-COMPILER
#
# Copies the kit to a folder elsewhere, builds its examples in C and in C++ and the programs of docs/getting-started.md
# by the commands of that page with nothing else, lays them out with the library and the sign-in agent of the kit in a Wine
# prefix of its own, and runs them.

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
# Where the page has it: below the home folder. A path that quoting mistakes would show at; pkg-config's own output has
# no quotes.
export HOME="$work/a home"
[ "$way" = find_package ] || HOME=$work/home
kit=$HOME/orlindex
mkdir "$HOME"
cp -r "$kit_built" "$kit"
hosts=$work/hosts

# run_page_commands: what docs/getting-started.md says to do in this way, in a folder with its programs.
run_page_commands()
{
    python3 -B "$root/tests/docs/samples.py" files docs/getting-started.md "$work/page"
    mv "$work/page/from-kit/CMakeLists.txt" "$work/page/"
    python3 -B "$root/tests/docs/samples.py" elsewhere "package.hosts-by-$way" >"$work/page/commands"
    [ -s "$work/page/commands" ] || fail "docs/getting-started.md has no command for $way"
    (cd "$work/page" && bash -e ./commands)
}

by_find_package()
{
    printf 'set(%s)\n' 'CMAKE_SYSTEM_NAME Windows' "CMAKE_C_COMPILER \"$cc\"" "CMAKE_CXX_COMPILER \"$cxx\"" \
        'CMAKE_EXE_LINKER_FLAGS_INIT -static' >"$work/toolchain.cmake"
    cmake -G Ninja -S "$kit/examples" -B "$hosts" -DCMAKE_TOOLCHAIN_FILE="$work/toolchain.cmake" \
        -DCMAKE_BUILD_TYPE=Release -DOrlindex_DIR="$kit/lib/cmake/Orlindex"
    cmake --build "$hosts"
    # As a host developer's own toolchain file would be named.
    CMAKE_TOOLCHAIN_FILE="$work/toolchain.cmake" run_page_commands
    cmp "$work/page/build/Orlindex.dll" "$kit/bin/Orlindex.dll"
    cp "$work/page/build/sign_in.exe" "$hosts/"
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
    run_page_commands
    cp "$work/page/sign_in_c.exe" "$work/page/sign_in_cpp.exe" "$hosts/"
}

case $way in
    find_package) by_find_package ;;
    pkg-config) by_pkg_config ;;
    *) fail "unknown way: $way" ;;
esac

cp "$kit/bin/Orlindex.dll" "$hosts/"
wine_session_begin

# run_host NAME TEXT
run_host()
{
    say "== $1"
    run_windows "$hosts/$1.exe" | tee "$work/$1.log"
    # A host that could not sign in says so, and some end well all the same.
    grep -qi "$2" "$work/$1.log" || fail "$1 did not sign in"
}

# As docs/agent.md says: the agent where it is, and a client config file that leads to it.
sed "s|\"searchPaths\": \"\"|\"searchPaths\": \"Z:$kit/agent\"|" "$kit/agent/host/Orlindex.config" \
    >"$hosts/Orlindex.config"
for program in "$hosts"/sign_in*.exe; do
    run_host "$(basename "$program" .exe)" 'signed in, 1000'
done
run_windows "$kit/agent/Pellwick.exe" --quit

# And for a quick trial: its files beside the hosts, where the server application is looked for first.
rm "$hosts/Orlindex.config"
find "$kit/agent" -maxdepth 1 -type f -exec cp -t "$hosts" {} +
cp "$kit/agent/scenarios/accept.json" "$hosts/Pellwick.scenario.json"
for host in c_host cpp_host; do
    run_host $host 'login  *IdSuccess'
done
