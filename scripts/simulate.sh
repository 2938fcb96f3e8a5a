#!/usr/bin/env bash
# Lays out the sign-in agent with simulated users for a host's developers: scripts/simulate.sh [options] FOLDER
#
# FOLDER receives all that a host needs to sign in without the real service:
#   Pellwick/   Pellwick.exe, PellwickClient.dll, TALIXVersionCompatibility.config, the scenario and its schema
#   host/       Orlindex.dll and an Orlindex.config that leads to Pellwick/: for the host's own folder
#   README.txt  what to do with them
# It may be run again, as after a new build: files are replaced, but a scenario and an Orlindex.config that were changed stay.
#
#   --build FOLDER         takes this build as it stands, instead of building
#   --windows-path PATH    where FOLDER will lie as Windows names it, for Orlindex.config; without it, as Wine does (Z:\...)
#   --reset-scenario       replaces the scenario even where it was changed
#   --help                 this text
#
# The plugin module is signed below the root of its own build tree, so it serves only an Orlindex.dll of the same build:
# hence the one in host/. Do not ship either.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"

build=
windows_path=
reset=
folder=
while [ $# -gt 0 ]; do
    case $1 in
        --help | -h) usage "$0"; exit ;;
        --build | --windows-path)
            [ $# -ge 2 ] || fail "$1 needs a value" "scripts/simulate.sh --help shows what there is"
            if [ "$1" = --build ]; then build=$2; else windows_path=$2; fi
            shift
            ;;
        --reset-scenario) reset=yes ;;
        -*) fail "unknown option: $1" "scripts/simulate.sh --help shows what there is" ;;
        *)
            [ -z "$folder" ] || fail "more than one folder: $folder and $1"
            folder=$1
            ;;
    esac
    shift
done
[ -n "$folder" ] || fail "no folder is named" "scripts/simulate.sh FOLDER; --help says more"

readonly marker='This folder was made by scripts/simulate.sh'
if [ -e "$folder" ] && [ ! -d "$folder" ]; then
    fail "$folder is not a folder"
fi
if [ -d "$folder" ] && [ -n "$(ls -A "$folder")" ] && ! grep -qs "$marker" "$folder/README.txt"; then
    fail "$folder holds other things" "name a folder that is empty or does not exist"
fi

if [ -z "$build" ]; then
    build=$root/build/release
    bash "$root/scripts/build.sh" release
fi
for file in bin/Orlindex.dll agent/Pellwick.exe agent/PellwickClient.dll \
    agent/TALIXVersionCompatibility.config; do
    [ -f "$build/$file" ] || fail "$build holds no $file" "build it first: scripts/build.sh release"
done

mkdir -p "$folder/Pellwick" "$folder/host"
folder=$(cd "$folder" && pwd)
if [ -z "$windows_path" ]; then
    windows_path="Z:${folder//\//\\}"
fi

# put FILE TARGET: replaces what is not the same, and says so.
put()
{
    if cmp -s "$1" "$folder/$2"; then
        say "  as it was   $2"
        return
    fi
    cp "$1" "$folder/$2.new"
    mv "$folder/$2.new" "$folder/$2"
    say "  written     $2"
}

# put_text TARGET: the same from the standard input.
put_text()
{
    local text
    text=$(mktemp)
    cat >"$text"
    chmod 644 "$text"
    put "$text" "$1"
    rm -f "$text"
}

# put_unless_changed FILE TARGET NAME WAY-OUT: what was written last is kept in Pellwick/.NAME-as-written, to know whether
# somebody has changed it since.
put_unless_changed()
{
    local written="$folder/Pellwick/.$3-as-written"
    if [ -f "$folder/$2" ] && ! cmp -s "$folder/$2" "$1" && ! cmp -s "$folder/$2" "$written"; then
        say "  kept        $2, which was changed ($4)"
        return
    fi
    put "$1" "$2"
    cp "$1" "$written"
}

json_text()
{
    local text=${1//\\/\\\\}
    printf '"%s"' "${text//\"/\\\"}"
}

say "Simulated sign-in in $folder"
put "$build/agent/Pellwick.exe" Pellwick/Pellwick.exe
put "$build/agent/PellwickClient.dll" Pellwick/PellwickClient.dll
put "$build/agent/TALIXVersionCompatibility.config" Pellwick/TALIXVersionCompatibility.config
put "$root/docs/schema/simulator-scenario.schema.json" Pellwick/simulator-scenario.schema.json
[ -z "$reset" ] || rm -f "$folder/Pellwick/Pellwick.scenario.json"
put_unless_changed "$root/agent/scenarios/accept.json" Pellwick/Pellwick.scenario.json scenario \
    '--reset-scenario replaces it'
put "$build/bin/Orlindex.dll" host/Orlindex.dll
config=$(mktemp)
chmod 644 "$config"
cat >"$config" <<END
{
    "ssoServer": {
        "searchPaths": $(json_text "$windows_path\\Pellwick")
    }
}
END
put_unless_changed "$config" host/Orlindex.config config 'delete it to have it written anew'
rm -f "$config"
put_text README.txt <<END
Simulated sign-in
=================

$marker; run it again after a new build.

1. Copy the two files of host\\ into the folder of your host application. Orlindex.config leads to
   $windows_path\\Pellwick
   If the folder lies elsewhere on your machine, change "searchPaths" there, or let the value "Location" of the registry
   key HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrany\\Pellwick\\1.10.0 name the folder Pellwick.

   The Orlindex.dll is that of the same build: the plugin module is signed below that build's own root, and no other
   Orlindex.dll accepts it. Do not ship either.

2. Start your host and sign in: everybody is Sam Example at first. The first host starts Pellwick.exe; all hosts of the
   user share it, and it ends by itself a minute after the last one.

3. Change Pellwick\\Pellwick.scenario.json: who signs in, what a login does, how long tokens last, what goes wrong.
   Its schema lies beside it, so that editors help. Then
       Pellwick.exe --check-scenario Pellwick.scenario.json
       Pellwick.exe --quit          (the next start reads the file anew)

In automatic tests, PELLWICK_SCENARIO names a scenario file, and PELLWICK_SIMULATOR_DATA a folder for the logins and the
signing key, so that tests run side by side. The log is
   %LocalAppData%\\Kestrany\\Identity Services\\Log\\IdServices.log
END

printf '%s\n' '' 'Next:' \
    "  1. Copy $folder/host/* beside your host application." \
    '  2. Start it, and sign in.' \
    "  3. Change $folder/Pellwick/Pellwick.scenario.json, and run Pellwick.exe --quit." \
    'README.txt there says more; so does docs/simulator.md.'
