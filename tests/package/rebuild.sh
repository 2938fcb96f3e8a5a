#!/usr/bin/env bash
# Builds what the kit holds a second time, elsewhere, and compares: tests/package/rebuild.sh BUILD-FOLDER ARCHIVE-FOLDER
#
# The sources are copied to a folder of another name and length, with the development root and the key of the build that
# is compared with: its trust data is part of the library. No compiler cache, which would return the first build's
# objects. The agent's module is signed as of the time that the first build's signature bears. The archive of the
# second build is then compared with the one in ARCHIVE-FOLDER.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"

build=$1 archives=$2
work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-rebuild.XXXXXX")
trap 'rm -rf "$work"' EXIT
copy=$work/some-other-folder
mkdir -p "$copy/out"
cp -r "$root"/{CMakeLists.txt,LICENSE,agent,cmake,docs,examples,include,scripts,src,tools} "$copy/"
ln -s "$deps" "$copy/.deps"
cp -a "$build/signing" "$copy/out/signing"

# quietly WHAT COMMAND...: shows the output where it fails.
quietly()
{
    local what=$1
    shift
    "$@" >"$work/log" 2>&1 || { cat "$work/log"; fail "$what"; }
}

signing_time()
{
    local text
    text=$(osslsigncode verify -CAfile "$build/signing/root.pem" -in "$build/agent/PellwickClient.dll" |
        sed -n 's/^[ \t]*Signing time: *//p' | head -n 1)
    [ -n "$text" ] || fail "the agent's module bears no signing time"
    date -u -d "$text" +%s
}

export CCACHE_DISABLE=1
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
toolchain=$(sed -n 's/^CMAKE_TOOLCHAIN_FILE:[A-Z]*=//p' "$build/CMakeCache.txt")
signed=$(signing_time)
began=$(now)
quietly "the second build could not be configured" cmake -G Ninja -S "$copy" -B "$copy/out" \
    -DCMAKE_TOOLCHAIN_FILE="$copy/${toolchain#"$root/"}" -DCMAKE_BUILD_TYPE=Release -DORLINDEX_BUILD_TESTS=OFF
quietly "the second build failed" env SOURCE_DATE_EPOCH="$signed" \
    cmake --build "$copy/out" -j "$jobs" --target src/all agent/all tools/all
say "built again in $(seconds_since "$began")"
for file in bin/Orlindex.dll lib/libOrlindex.dll.a lib/Orlindex.lib tools/orlindex-doctor.exe agent/Pellwick.exe \
    agent/unsigned/PellwickClient.dll; do
    cmp "$build/$file" "$copy/out/$file"
    say "the same $(stat -c %s "$build/$file") bytes: $file"
done

# With the modules signed at one time the archives are the same, too.
quietly "the second archive could not be made" \
    bash "$copy/scripts/package.sh" --build-dir "$copy/out" --output "$work/packed"
archive=$(basename "$work"/packed/*.zip)
cmp "$archives/$archive" "$work/packed/$archive"
say "the same $(stat -c %s "$archives/$archive") bytes: $archive"
