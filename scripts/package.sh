#!/usr/bin/env bash
# Makes the kit for host developers: scripts/package.sh [options] [CMake options]
#
# Builds the release (scripts/build.sh) and writes build/Orlindex-<version>-win64.zip: Orlindex.dll with import
# libraries, headers, CMake and pkg-config files, the doctor, the sign-in agent, examples, documentation and licence texts.
# The agent's plugin module is signed below the build tree's own root. A build that trusts another one packs it unsigned.
#
# CMake options such as -DORLINDEX_PINNED_ROOT=<certificate file> are passed to scripts/build.sh and also apply to later builds.
#
# The archive is reproducible: builds of equal sources, with equal trust data and signing keys (build/release/signing) and the
# same SOURCE_DATE_EPOCH, give equal archives. The files in the archive and the signature have that time.
#
#   --build-dir FOLDER   packs this build and builds nothing
#   --output FOLDER      writes the archive to this folder instead of build/
#   --help               prints this text

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"

build=
output=$root/build
options=()
while [ $# -gt 0 ]; do
    case $1 in
        --help | -h) usage "$0"; exit ;;
        --build-dir | --output)
            [ -n "${2:-}" ] || fail "$1 needs a folder" "scripts/package.sh --help prints the options"
            if [ "$1" = --build-dir ]; then build=$2; else output=$2; fi
            shift
            ;;
        -D*) options+=("$1") ;;
        *) fail "unknown argument: $1" "scripts/package.sh --help prints the options" ;;
    esac
    shift
done

# Sets `build` to the build to pack.
settle_build()
{
    if [ -z "$build" ]; then
        build=$root/build/release
        bash "$root/scripts/build.sh" release "${options[@]}"
        return
    fi
    [ ${#options[@]} -eq 0 ] || fail "${options[0]} does not go with --build-dir" "that build is packed unchanged"
    [ -f "$build/CPackConfig.cmake" ] || fail "$build is no build of this library" "scripts/build.sh makes one"
}

# Only a complete archive is moved to the output folder, where it replaces one with the same name.
pack()
{
    local work
    mkdir -p "$output"
    work=$(mktemp -d "$output/package.XXXXXX")
    # shellcheck disable=SC2064 # expand the variable now
    trap "rm -rf '$work'" EXIT
    cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        fail "the archive could not be made" "see the messages above"
    }
    archive=$output/$(basename "$work"/*.zip)
    mv -f "$work"/*.zip "$archive"
}

# Prints the files in the archive with their sizes.
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

settle_build
pack
contents=$(list_contents)
say "Packed: ${archive#"$root/"} ($(stat -c %s "$archive") bytes, SHA-256 $(sha256sum "$archive" | cut -d ' ' -f 1))"
say "$contents"
if grep -q ' agent/unsigned/' <<<"$contents"; then
    say "note: agent/unsigned/PellwickClient.dll is not signed. Sign it with a certificate that this build's library accepts, and" \
        "put it beside Pellwick.exe: docs/openid.md, \"Ship it\"."
fi
if ! grep -q ' docs/reference/' <<<"$contents"; then
    say "note: without the reference in docs/reference, because doxygen was not found."
fi
if grep -q 'DevelopmentRoot = true' "$build/generated/BuildData.h"; then
    say "note: this build trusts a development root. To make a kit for shipping, name the maker's root certificate:" \
        "scripts/package.sh -DORLINDEX_PINNED_ROOT=<file>"
fi
