#!/usr/bin/env bash
# Makes the API reference from the public headers: scripts/reference.sh [FOLDER]
#
# Writes FOLDER/html (default: build/reference); the first page is FOLDER/html/index.html. If a public name has no description
# or a reference leads nowhere, the script prints the places and fails.
#
#   --help    prints this text

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"

case ${1:-} in
    --help | -h) usage "$0"; exit ;;
    -*) fail "unknown argument: $1" "scripts/reference.sh --help prints the options" ;;
esac
[ $# -le 1 ] || fail "more than one folder is named: $#" "scripts/reference.sh --help prints the options"

command -v doxygen >/dev/null || fail "doxygen was not found" "run scripts/setup.sh first"
version=$(sed -n 's/^project(Orlindex VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
[ -n "$version" ] || fail "CMakeLists.txt does not say which version this is"
mkdir -p "${1:-$root/build/reference}"
folder=$(cd "${1:-$root/build/reference}" && pwd)

cd "$root"
doxygen - <<SETTINGS || fail "the reference is incomplete" "the warnings above name the places in include/orlindex"
@INCLUDE         = docs/Doxyfile
PROJECT_NUMBER   = $version
OUTPUT_DIRECTORY = "$folder"
SETTINGS
say "$folder/html/index.html"
