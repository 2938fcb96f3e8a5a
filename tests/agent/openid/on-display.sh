#!/usr/bin/env bash
# Runs a command on a display of its own, with a Wine session that uses it: on-display.sh COMMAND...

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../../scripts/lib/common.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"
# shellcheck source=scripts/lib/display.sh
. "$root/scripts/lib/display.sh"

trap display_end EXIT
display_begin
"$@" </dev/null
