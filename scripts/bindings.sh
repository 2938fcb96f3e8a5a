#!/usr/bin/env bash
# Makes the packages for hosts in Python, Node.js and .NET: scripts/bindings.sh [options] [python] [node] [dotnet]
#
# Makes the machine ready (scripts/setup.sh) and writes to build/bindings:
#   orlindex-<version>-py3-none-any.whl and .tar.gz   for pip, by Debian's python3-build
#   orlindex-<version>.tgz                            for npm, by npm pack
#   Orlindex.Client.<version>.nupkg                   for NuGet, compiled by mcs and laid out as NuGet does
# Without a language, it makes all packages. They contain no Orlindex.dll: the host's installer puts it beside the program.
#
#   --output FOLDER   writes the packages to this folder
#   --no-setup        the machine is ready
#   --help            prints this text

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"

output=$root/build/bindings
setup=yes
languages=()
while [ $# -gt 0 ]; do
    case $1 in
        --help | -h) usage "$0"; exit ;;
        --output)
            [ -n "${2:-}" ] || fail "--output needs a folder" "scripts/bindings.sh --help prints the options"
            output=$2
            shift
            ;;
        --no-setup) setup= ;;
        python | node | dotnet) languages+=("$1") ;;
        *) fail "unknown argument: $1" "scripts/bindings.sh --help prints the options" ;;
    esac
    shift
done
[ ${#languages[@]} -gt 0 ] || languages=(python node dotnet)

# Debian's Python, to which the packages that build belong; another one may come first in PATH.
python=/usr/bin/python3

# logged COMMAND...: prints the output only if the command fails.
logged()
{
    "$@" >"$work/log" 2>&1 </dev/null || {
        cat "$work/log" >&2
        fail "$1 ended with an error" "see the messages above"
    }
}

# copy_sources LANGUAGE: a build must not leave its files in the tree.
copy_sources()
{
    cp -r "$root/bindings/$1" "$work/$1"
    cp "$root/LICENSE" "$work/$1/"
}

make_python()
{
    copy_sources python
    logged "$python" -m build --no-isolation --outdir "$work/made" "$work/python"
}

make_node()
{
    copy_sources node
    (cd "$work/node" && logged npm pack --ignore-scripts --pack-destination "$work/made")
}

make_dotnet()
{
    copy_sources dotnet
    logged mcs -target:library -langversion:7 -warnaserror -nowarn:1591 -optimize+ -doc:"$work/dotnet/Orlindex.Client.xml" \
        -out:"$work/dotnet/Orlindex.Client.dll" -recurse:"$work/dotnet/src/*.cs"
    logged "$python" -B "$root/bindings/dotnet/pack.py" "$work/dotnet" "$work/made"
}

[ -z "$setup" ] || bash "$root/scripts/setup.sh"
work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-bindings.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir "$work/made"
for language in "${languages[@]}"; do
    "make_$language"
done
mkdir -p "$output"
for file in "$work"/made/*; do
    mv -f "$file" "$output/"
    say "Packed: ${output#"$root/"}/${file##*/} ($(stat -c %s "$output/${file##*/}") bytes)"
done
