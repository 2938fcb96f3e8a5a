#!/usr/bin/env bash
# Runs the package with Node.js of this machine against the stand-in: tests/bindings/node/run-native.sh PROJECT

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=scripts/lib/common.sh
. "$here/../../../scripts/lib/common.sh"

work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-node.XXXXXX")
trap 'rm -rf "$work"' EXIT
cp -r "$1/." "$work"
# The project has koffi's module for Windows.
cp -r "$deps"/bindings/node_modules/@koromix/koffi-linux-* "$work/node_modules/@koromix/"
cp "$here/standin.test.mjs" "$work/"
cd "$work"
node standin.test.mjs
