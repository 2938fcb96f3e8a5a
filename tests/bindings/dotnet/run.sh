#!/usr/bin/env bash
# Runs one test of the package with .NET for Windows under Wine: tests/bindings/dotnet/run.sh BUILD PROJECT NAME SCENARIO
#
# The project is where install.sh installed the package. Each test has a copy of it, with the library beside the program.

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=scripts/lib/common.sh
. "$here/../../../scripts/lib/common.sh"
# shellcheck source=tests/bindings/windows.sh
. "$here/../windows.sh"

build=$1 project=$2 name=$3 scenario=$4
work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-dotnet.XXXXXX")
trap 'rm -rf "$work"' EXIT
cp -r "$project/." "$work"
install_library "$build" "$work"
build_dotnet_host "$work" "$here/Tests.cs" "$here/$name.cs"
export ORLINDEX_STANDIN="Z:${ORLINDEX_STANDIN//\//\\}"
status=0
run_host "$work" "$scenario" "${dotnet[@]}" Host.dll >"$work/log" || status=$?
cat "$work/log"
# A runtime that ends early may do so with 0.
grep -q ', 0 failed$' "$work/log" || fail "the tests did not run to their end"
exit "$status"
