#!/usr/bin/env bash
# What scripts/bindings.sh refuses, with a cause and before it does anything: tests/bindings/script.sh

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"
# shellcheck source=tests/support/refused.sh
. "$root/tests/support/refused.sh"

script=$root/scripts/bindings.sh
work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-bindings.XXXXXX")
trap 'rm -rf "$work"' EXIT

refused "$script" 'unknown argument: --fast' --fast
refused "$script" 'unknown argument: perl' perl
refused "$script" '--output needs a folder' --output
refused "$script" '--output needs a folder' --output ''
bash "$script" --help | grep -q -e '--output FOLDER' || fail "--help does not help"
