#!/usr/bin/env bash
# Makes the kit for host developers: scripts/package.sh [options] [CMake options]
#
# Builds the release (scripts/build.sh) and writes build/Orlindex-<version>-win64.zip: Orlindex.dll with import
# libraries, headers, CMake and pkg-config files, the doctor, the sign-in agent, examples, documentation and licence texts.
# The agent's plugin module is signed below the build tree's own root, so a build that trusts another one packs no
# agent.
#
# CMake options such as -DORLINDEX_PINNED_ROOT=<certificate file> are those of scripts/build.sh, and stay in force.
#
# Builds of equal sources with equal trust data and signing keys (build/release/signing), with SOURCE_DATE_EPOCH set to
# the same time, give equal archives: the files in them and the signature bear that time.
#
#   --build-dir FOLDER   packs this build as it stands, instead of building
#   --output FOLDER      where the archive is written, in the place of build/
#   --help               this text

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
            [ -n "${2:-}" ] || fail "$1 needs a folder" "scripts/package.sh --help shows what there is"
            if [ "$1" = --build-dir ]; then build=$2; else output=$2; fi
            shift
            ;;
        -D*) options+=("$1") ;;
        *) fail "unknown argument: $1" "scripts/package.sh --help shows what there is" ;;
    esac
    shift
done

# Sets `build` to the build that is packed.
settle_build()
{
    if [ -z "$build" ]; then
        build=$root/build/release
        bash "$root/scripts/build.sh" release "${options[@]}"
        return
    fi
    [ ${#options[@]} -eq 0 ] || fail "${options[0]} does not go with --build-dir" "that build is packed as it stands"
    [ -f "$build/CPackConfig.cmake" ] || fail "$build is no build of this library" "scripts/build.sh makes one"
}

# Only whole archives come to stand in the output folder; what was packed before under the same name is replaced.
pack()
{
    local work
    mkdir -p "$output"
    work=$(mktemp -d "$output/package.XXXXXX")
    # shellcheck disable=SC2064 # the folder of now
    trap "rm -rf '$work'" EXIT
    cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        fail "the archive could not be made" "its messages stand above"
    }
    archive=$output/$(basename "$work"/*.zip)
    mv -f "$work"/*.zip "$archive"
}

# What is in it: the files with their sizes.
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
if ! grep -q ' agent/' <<<"$contents"; then
    say "note: without the sign-in agent, which only a build that trusts its own development root and signers accepts." \
        "Host developers take it from a kit of such a build, together with that kit's Orlindex.dll."
fi
if ! grep -q ' docs/reference/' <<<"$contents"; then
    say "note: without the reference in docs/reference, which doxygen makes; it was not found."
fi
if grep -q 'DevelopmentRoot = true' "$build/generated/BuildData.h"; then
    say "note: this build trusts a development root. For a kit to ship, name the maker's root certificate:" \
        "scripts/package.sh -DORLINDEX_PINNED_ROOT=<file>"
fi
