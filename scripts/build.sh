#!/usr/bin/env bash
# Builds Orlindex for Windows: scripts/build.sh [release|debug] [CMake options]
#
# Makes the machine ready first (scripts/setup.sh), then builds the library, the sign-in agent, the tools and the examples into
# build/release (the default) or build/debug:
#
#   build/<kind>/bin/Orlindex.dll            the library
#   build/<kind>/lib/libOrlindex.dll.a       its import library
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
    release | debug) kind=${1:-release} ;;
    *) fail "unknown kind of build: $1" "scripts/build.sh --help prints the options" ;;
esac
shift $(($# > 0))

bash "$root/scripts/setup.sh"
began=$(now)
configure_preset "mingw-$kind" "$root/build/$kind" "$@" || fail "the configuration failed" "see the messages above"
build_preset "mingw-$kind" src/all agent/all tools/all examples/all || fail "the build failed" "its messages stand above"
say "Built in $(seconds_since "$began"):"
say "  build/$kind/bin/Orlindex.dll"
say "  build/$kind/lib/libOrlindex.dll.a"
