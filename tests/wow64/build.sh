#!/usr/bin/env bash
# Builds the library, the sign-in agent and the examples for 32-bit Windows. Ends with 77 where that is skipped.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"
# shellcheck source=scripts/lib/build.sh
. "$root/scripts/lib/build.sh"

if [ ! -d "$deps/prefix32/lib" ]; then
    say "skipped: there are no libraries for 32-bit Windows; scripts/setup.sh --32-bit makes them"
    exit 77
fi
configure_preset mingw32-release "$root/build/release32"
build_preset mingw32-release src/all agent/all examples/all
