#!/usr/bin/env bash
# Runs the tests of the sign-in window on a display of their own: window-tests.sh PROGRAM [GOOGLETEST-ARGUMENTS...]

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../../scripts/lib/common.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"
# shellcheck source=scripts/lib/display.sh
. "$root/scripts/lib/display.sh"

trap display_end EXIT
display_begin
run_windows "$@"
