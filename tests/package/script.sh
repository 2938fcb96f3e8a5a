#!/usr/bin/env bash
# What scripts/package.sh refuses, with a cause and before it does anything: tests/package/script.sh BUILD-FOLDER

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"

build=$1
work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-package.XXXXXX")
trap 'rm -rf "$work"' EXIT

# refused TEXT ARGUMENTS...
refused()
{
    local text=$1 output
    shift
    if output=$(bash "$root/scripts/package.sh" --output "$work/out" "$@" 2>&1); then fail "taken: $*" "$output"; fi
    grep -q "^error: .*$text" <<<"$output" || fail "$* is not refused for '$text':" "$output"
    [ ! -e "$work/out" ] || fail "$* left something behind"
}

refused 'unknown argument: --fast' --fast
refused '--build-dir needs a folder' --build-dir
refused '--build-dir needs a folder' --build-dir ''
refused 'is no build of this library' --build-dir "$work"
refused 'does not go with --build-dir' --build-dir "$build" -DORLINDEX_PINNED_ROOT=root.pem
bash "$root/scripts/package.sh" --help | grep -q -e '--build-dir FOLDER' || fail "--help does not help"
