#!/usr/bin/env bash
# What scripts/bindings.sh refuses, with a cause and before it does anything: tests/bindings/script.sh

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"

work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-bindings.XXXXXX")
trap 'rm -rf "$work"' EXIT

# refused TEXT ARGUMENTS...
refused()
{
    local text=$1 output
    shift
    if output=$(bash "$root/scripts/bindings.sh" --output "$work/out" "$@" 2>&1); then fail "taken: $*" "$output"; fi
    grep -q "^error: .*$text" <<<"$output" || fail "$* is not refused for '$text':" "$output"
    [ ! -e "$work/out" ] || fail "$* left something behind"
}

refused 'unknown argument: --fast' --fast
refused 'unknown argument: perl' perl
refused '--output needs a folder' --output
refused '--output needs a folder' --output ''
bash "$root/scripts/bindings.sh" --help | grep -q -e '--output FOLDER' || fail "--help does not help"
