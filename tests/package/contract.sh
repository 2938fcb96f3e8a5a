#!/usr/bin/env bash
# Builds a plugin module as its developer would, from the kit alone: tests/package/contract.sh KIT C++-COMPILER LLVM-READOBJ
#
# Each header of the contract compiles by itself, and the module of docs/plugin-contract.md exports its factory.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"

kit=$(cd "$1" && pwd)
cxx=$2 readobj=$3
work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-contract.XXXXXX")
trap 'rm -rf "$work"' EXIT
compile=("$cxx" -std=c++17 -pedantic -Wall -Wextra -Werror "-I$kit/include" "-I$kit/plugin")

mapfile -t headers < <(find "$kit/plugin" -name '*.h' | sort)
[ ${#headers[@]} -gt 0 ] || fail "the kit has no header of the contract"
for header in "${headers[@]}"; do
    printf '#include "%s"\n' "${header#"$kit/plugin/"}" >"$work/alone.cpp"
    "${compile[@]}" -fsyntax-only "$work/alone.cpp" || fail "$header does not compile by itself"
done

python3 -B "$root/tests/docs/samples.py" files docs/plugin-contract.md "$work"
cd "$work"
"${compile[@]}" -shared -static plugin.cpp plugin.def -o plugin.dll
exported=$("$readobj" --coff-exports plugin.dll | sed -n 's/^ *Name: \(.\)/\1/p')
[ "$exported" = '?GetSSOClientFactory@@YAPEAVISSOClientFactory@IdentityServices@Kestrany@@XZ' ] ||
    fail "plugin.dll exports: $exported"
say "${#headers[@]} headers, 1 module"
