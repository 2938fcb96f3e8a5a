#!/usr/bin/env bash
# Packs a build that trusts another root than its tree's own: tests/package/foreign-root.sh BUILD-FOLDER
#
# Only configured anew: the binaries of the build that is given stand in for its own, the agent's among them.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"

build=$1
work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-foreign.XXXXXX")
trap 'rm -rf "$work"' EXIT
toolchain=$(sed -n 's/^CMAKE_TOOLCHAIN_FILE:[A-Z]*=//p' "$build/CMakeCache.txt")
cmake -G Ninja -S "$root" -B "$work/build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
    -DORLINDEX_BUILD_TESTS=OFF -DORLINDEX_PINNED_ROOT="$build/signing/unknown-root.pem" >"$work/log" 2>&1 ||
    { cat "$work/log"; fail "the build could not be configured"; }
grep -q "contains the sign-in agent's module unsigned" "$work/log" || fail "the configuration does not say what is unsigned"
for file in bin/Orlindex.dll lib/libOrlindex.dll.a lib/Orlindex.lib tools/orlindex-doctor.exe agent/Pellwick.exe \
    agent/PellwickClient.dll agent/unsigned/PellwickClient.dll; do
    mkdir -p "$work/build/${file%/*}"
    cp "$build/$file" "$work/build/$file"
done

# The script's own output: what it says, and what it packed.
output=$(bash "$root/scripts/package.sh" --build-dir "$work/build" --output "$work")
grep -q ' bin/Orlindex.dll$' <<<"$output" || fail "the library is missing:" "$output"
# The module that is signed within the build tree would be refused by this library, and the scenarios are for development.
if grep -E ' agent/(PellwickClient\.dll|scenarios/)' <<<"$output"; then fail "what is for development is in the kit"; fi
for file in Pellwick.exe TALIXVersionCompatibility.config host/Orlindex.config unsigned/PellwickClient.dll; do
    grep -q " agent/$file$" <<<"$output" || fail "agent/$file is missing:" "$output"
done
grep -q '^note: agent/unsigned/PellwickClient.dll is not signed' <<<"$output" || fail "the script does not say what to sign:" "$output"
if grep -q 'trusts a development root' <<<"$output"; then fail "this is no development build:" "$output"; fi
mkdir "$work/unpacked"
(cd "$work/unpacked" && cmake -E tar xf "$work"/*.zip)
python3 -B "$root/tests/docs/links.py" "$work/unpacked"/*
