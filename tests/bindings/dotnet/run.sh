#!/usr/bin/env bash
# Runs one test of the package with .NET for Windows under Wine: tests/bindings/dotnet/run.sh BUILD PROJECT NAME SCENARIO

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=scripts/lib/common.sh
. "$here/../../../scripts/lib/common.sh"
# shellcheck source=tests/bindings/windows.sh
. "$here/../windows.sh"

build=$1 project=$2 name=$3 scenario=$4
copy_project "$build" "$project"
build_dotnet_host "$work" "$here/Tests.cs" "$here/$name.cs"
status=0
run_host "$work" "$scenario" "${dotnet[@]}" Host.dll >"$work/log" || status=$?
cat "$work/log"
# A runtime that ends early may do so with 0.
grep -q ', 0 failed$' "$work/log" || fail "the tests did not run to their end"
exit "$status"
