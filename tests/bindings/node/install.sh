#!/usr/bin/env bash
# Installs the package into an empty project: tests/bindings/node/install.sh PACKAGES PROJECT
#
# Without a registry: koffi comes from the packages that scripts/setup.sh installed, with its module for Windows.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../../scripts/lib/common.sh"

packages=$1 project=$2
rm -rf "$project"
mkdir -p "$project"
cd "$project"
printf '{"private": true}\n' >package.json
modules=$deps/bindings/node_modules
# --force: npm would refuse a module for another system than this one.
npm install --offline --install-links --force --omit=optional --ignore-scripts --no-audit --no-fund \
    "$packages"/orlindex-*.tgz "$modules/koffi" "$modules/@koromix/koffi-win32-x64"
[ -f node_modules/orlindex/lib/index.js ] || fail "the package was not installed"
