#!/usr/bin/env bash
# scripts/pictures.sh makes every picture that is in docs/images, in the same size: pictures.sh BUILD FOLDER

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"

build=$1 folder=$2
rm -rf "$folder"
bash "$root/scripts/pictures.sh" --build-dir "$build" --output "$folder"

sizes()
{
    (cd "$1" && identify -format '%f %m %wx%h\n' ./*.png)
}
expected=$(sizes "$root/docs/images")
made=$(sizes "$folder")
[ "$made" = "$expected" ] || fail "docs/images has:" "$expected" "scripts/pictures.sh made:" "$made"
say "$made"
