#!/usr/bin/env bash
# Builds Orlindex for Windows: scripts/build.sh [release|debug|microsoft] [CMake options]
#
# Makes the machine ready first (scripts/setup.sh), then builds the library, the sign-in agent, the tools and the examples into
# build/release (the default), build/debug or build/microsoft:
#
#   build/<kind>/bin/Orlindex.dll            the library
#   build/<kind>/lib/libOrlindex.dll.a       its import library; of the kind microsoft, Orlindex.lib
#
# The kind microsoft is for tests: the same sources under Microsoft's C++ ABI, with LLVM's standard library, for Wine. To make a
# library for hosts of Visual Studio, build with Visual Studio (preset msvc).
#
# CMake options such as -DORLINDEX_PINNED_ROOT=<certificate file> also apply to later builds of the same kind.
#
#   --help    prints this text

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"
# shellcheck source=scripts/lib/build.sh
. "$root/scripts/lib/build.sh"

case ${1:-release} in
    --help | -h) usage "$0"; exit ;;
    release | debug | microsoft) kind=${1:-release} ;;
    *) fail "unknown kind of build: $1" "scripts/build.sh --help prints the options" ;;
esac
shift $(($# > 0))

preset=mingw-$kind import_library=libOrlindex.dll.a
if [ "$kind" = microsoft ]; then
    preset=microsoft-release import_library=Orlindex.lib
fi

bash "$root/scripts/setup.sh"
began=$(now)
configure_preset "$preset" "$root/build/$kind" "$@" || fail "the configuration failed" "see the messages above"
build_preset "$preset" src/all agent/all tools/all examples/all || fail "the build failed" "its messages stand above"
say "Built in $(seconds_since "$began"):"
say "  build/$kind/bin/Orlindex.dll"
say "  build/$kind/lib/$import_library"
