#!/usr/bin/env bash
# What scripts/package.sh refuses, with a cause and before it does anything: tests/package/script.sh BUILD-FOLDER

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"
# shellcheck source=tests/support/refused.sh
. "$root/tests/support/refused.sh"

build=$1 script=$root/scripts/package.sh
work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-package.XXXXXX")
trap 'rm -rf "$work"' EXIT

refused "$script" 'unknown argument: --fast' --fast
refused "$script" '--build-dir needs a folder' --build-dir
refused "$script" '--build-dir needs a folder' --build-dir ''
refused "$script" 'is no build of this library' --build-dir "$work"
refused "$script" 'does not go with --build-dir' --build-dir "$build" -DORLINDEX_PINNED_ROOT=root.pem
bash "$script" --help | grep -q -e '--build-dir FOLDER' || fail "--help does not help"
