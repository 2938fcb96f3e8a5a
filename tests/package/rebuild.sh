#!/usr/bin/env bash
# Builds the library a second time, elsewhere, and compares: tests/package/rebuild.sh BUILD-FOLDER LIBRARY
#
# The sources are copied to a folder of another name and length, with the development root of the build that is compared
# with: its trust data is part of the library. No compiler cache, which would answer with the first build's objects.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"

build=$1 library=$2
work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-rebuild.XXXXXX")
trap 'rm -rf "$work"' EXIT
copy=$work/some-other-folder
mkdir -p "$copy/out"
cp -r "$root"/{CMakeLists.txt,cmake,examples,include,scripts,src} "$copy/"
[ ! -d "$root/tools" ] || cp -r "$root/tools" "$copy/"
ln -s "$deps" "$copy/.deps"
cp -a "$build/signing" "$copy/out/signing"

export CCACHE_DISABLE=1
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
toolchain=$(sed -n 's/^CMAKE_TOOLCHAIN_FILE:[A-Z]*=//p' "$build/CMakeCache.txt")
began=$(now)
cmake -G Ninja -S "$copy" -B "$copy/out" -DCMAKE_TOOLCHAIN_FILE="$copy/${toolchain#"$root/"}" \
    -DCMAKE_BUILD_TYPE=Release -DORLINDEX_BUILD_TESTS=OFF -DORLINDEX_BUILD_SIMULATOR=OFF >"$work/log" 2>&1 ||
    { cat "$work/log"; fail "the second build could not be configured"; }
cmake --build "$copy/out" -j "$jobs" --target orlindex >"$work/log" 2>&1 || { cat "$work/log"; fail "the second build failed"; }
say "built again in $(seconds_since "$began")"
cmp "$library" "$copy/out/bin/Orlindex.dll"
say "the same $(stat -c %s "$library") bytes"
