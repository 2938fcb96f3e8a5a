#!/usr/bin/env bash
# Builds the stand-ins for the library: tests/bindings/standin.sh FOLDER C-COMPILER C-COMPILER-32
#
#     Orlindex.dll, version-<version>/Orlindex.dll, without-login/Orlindex.dll      for this machine
#     windows/version-2.0.0.0/Orlindex.dll, windows/without-login/Orlindex.dll      for 64-bit Windows
#     bits32/Orlindex.dll                                                           for 32-bit Windows

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=scripts/lib/common.sh
. "$here/../../scripts/lib/common.sh"

folder=$1 windows_compiler=$2 windows_compiler_32=$3
rm -rf "$folder"

# build FILE COMPILER OPTIONS...
build()
{
    local file=$1
    shift
    mkdir -p "$(dirname "$file")"
    "$@" -std=c11 -Wall -Wextra -Werror -shared -I"$root/include" "$here/StandIn.c" -o "$file"
}

native=(cc -D_POSIX_C_SOURCE=200809L -fPIC)
windows=("$windows_compiler" -static)
build "$folder/Orlindex.dll" "${native[@]}"
build "$folder/bits32/Orlindex.dll" "$windows_compiler_32" -static
for version in 2.0.0.0 1.11.13.2 unknown 1.12.0.0; do
    build "$folder/version-$version/Orlindex.dll" "${native[@]}" -DSTANDIN_VERSION="\"$version\""
done
build "$folder/without-login/Orlindex.dll" "${native[@]}" -DSTANDIN_WITHOUT_LOGIN
build "$folder/windows/version-2.0.0.0/Orlindex.dll" "${windows[@]}" -DSTANDIN_VERSION='"2.0.0.0"'
build "$folder/windows/without-login/Orlindex.dll" "${windows[@]}" -DSTANDIN_WITHOUT_LOGIN
