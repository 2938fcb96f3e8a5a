#!/usr/bin/env bash
# Compiles a host in TypeScript against the installed package: tests/bindings/node/types.sh PROJECT

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=scripts/lib/common.sh
. "$here/../../../scripts/lib/common.sh"

work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-types.XXXXXX")
trap 'rm -rf "$work"' EXIT
cp -r "$1/." "$work"
cp "$here/types.ts" "$work/"
cd "$work"
modules=$deps/bindings/node_modules
node "$modules/typescript/bin/tsc" --noEmit --strict --target es2022 --module node16 --moduleResolution node16 \
    --typeRoots "$modules/@types" --types node types.ts
