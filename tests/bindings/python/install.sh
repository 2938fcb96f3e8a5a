#!/usr/bin/env bash
# Installs the package into an empty project: tests/bindings/python/install.sh PACKAGES PROJECT
#
# Without a package index, so that only the built package counts. Debian's Python installs, whatever is first in PATH.

set -euo pipefail

packages=$1 project=$2
python=/usr/bin/python3
rm -rf "$project"
mkdir -p "$project"
cd "$project"
"$python" -m venv --without-pip environment
"$python" -m pip --python environment/bin/python --disable-pip-version-check install --no-index \
    "$packages"/orlindex-*-py3-none-any.whl
[ "$(environment/bin/python -c 'import orlindex; print(orlindex.__file__)')" = \
    "$(echo "$PWD"/environment/lib/python3*/site-packages/orlindex/__init__.py)" ]
