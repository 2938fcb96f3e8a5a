#!/usr/bin/env bash
# Makes the kit for host developers: scripts/package.sh [CMake options]
#
# Builds the release (scripts/build.sh) and writes build/Orlindex-<version>-win64.zip: Orlindex.dll with import libraries,
# headers, CMake and pkg-config files, the simulator, examples, documentation and licence texts. Equal builds give equal
# archives; SOURCE_DATE_EPOCH sets the time that the files in it bear.
#
# CMake options such as -DORLINDEX_PINNED_ROOT=<certificate file> are those of scripts/build.sh, and stay in force.
#
#   --help    this text

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"

case ${1:-} in
    --help | -h) usage "$0"; exit ;;
    '' | -D*) ;;
    *) fail "unknown argument: $1" "scripts/package.sh --help shows what there is" ;;
esac

build=$root/build/release

# Only whole archives come to stand in build/; what was packed before under the same name is replaced.
pack()
{
    local work
    work=$(mktemp -d "$root/build/package.XXXXXX")
    # shellcheck disable=SC2064 # the folder of now
    trap "rm -rf '$work'" EXIT
    cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        fail "the archive could not be made" "its messages stand above"
    }
    archive=$root/build/$(basename "$work"/*.zip)
    mv -f "$work"/*.zip "$archive"
}

# What is in it: the folders with their files and sizes.
list_contents()
{
    python3 - "$archive" <<'PYTHON'
import sys
import zipfile

for entry in zipfile.ZipFile(sys.argv[1]).infolist():
    if not entry.is_dir():
        print(f"  {entry.file_size:>9}  {entry.filename.split('/', 1)[1]}")
PYTHON
}

bash "$root/scripts/build.sh" release "$@"
pack
say "Packed: build/${archive##*/} ($(stat -c %s "$archive") bytes, SHA-256 $(sha256sum "$archive" | cut -d ' ' -f 1))"
list_contents
if grep -q 'DevelopmentRoot = true' "$build/generated/BuildData.h"; then
    say "note: this build trusts a development root. For a kit to ship, name the maker's root certificate:" \
        "scripts/package.sh -DORLINDEX_PINNED_ROOT=<file>"
fi
