#!/usr/bin/env bash
# Lays out the sign-in agent with simulated users for a host's developers: scripts/simulate.sh [options] FOLDER
#
# The script fills FOLDER with everything that a host needs to sign in without the identity service:
#   Pellwick/   Pellwick.exe, PellwickClient.dll, TALIXVersionCompatibility.config, the scenario and its schema
#   host/       Orlindex.dll, and an Orlindex.config that names Pellwick/: copy both to the folder of the host
#   README.txt  the next steps
# Run it again after a new build: it replaces the files, but keeps a scenario and an Orlindex.config that you changed.
#
#   --build FOLDER         uses this build and builds nothing
#   --windows-path PATH    the Windows path of FOLDER, for Orlindex.config; default: the path under Wine (Z:\...)
#   --reset-scenario       replaces the scenario even if it was changed
#   --help                 prints this text
#
# The plugin module is signed below the root of its own build tree, so it only works with an Orlindex.dll of the same build,
# which is in host/. Do not ship either.

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
            [ $# -ge 2 ] || fail "$1 needs a value" "scripts/simulate.sh --help prints the options"
            if [ "$1" = --build ]; then build=$2; else windows_path=$2; fi
            shift
            ;;
        --reset-scenario) reset=yes ;;
        -*) fail "unknown option: $1" "scripts/simulate.sh --help prints the options" ;;
        *)
            [ -z "$folder" ] || fail "more than one folder: $folder and $1"
            folder=$1
            ;;
    esac
    shift
done
[ -n "$folder" ] || fail "no folder is named" "usage: scripts/simulate.sh FOLDER; see --help"

readonly marker='This folder was made by scripts/simulate.sh'
if [ -e "$folder" ] && [ ! -d "$folder" ]; then
    fail "$folder is not a folder"
fi
if [ -d "$folder" ] && [ -n "$(ls -A "$folder")" ] && ! grep -qs "$marker" "$folder/README.txt"; then
    fail "$folder contains other files" "name a folder that is empty or does not exist"
fi

if [ -z "$build" ]; then
    build=$root/build/release
    bash "$root/scripts/build.sh" release
fi
for file in bin/Orlindex.dll agent/Pellwick.exe agent/PellwickClient.dll \
    agent/TALIXVersionCompatibility.config; do
    [ -f "$build/$file" ] || fail "$build does not contain $file" "build it first: scripts/build.sh release"
done

mkdir -p "$folder/Pellwick" "$folder/host"
folder=$(cd "$folder" && pwd)
if [ -z "$windows_path" ]; then
    windows_path="Z:${folder//\//\\}"
fi

# put FILE TARGET: copies a file if it differs, and prints what it did.
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

# put_text TARGET: the same with the standard input.
put_text()
{
    local text
    text=$(mktemp)
    cat >"$text"
    chmod 644 "$text"
    put "$text" "$1"
    rm -f "$text"
}

# put_unless_changed FILE TARGET NAME REMEDY: copies a file unless somebody changed the target. Pellwick/.NAME-as-written is a copy
# of what was written last.
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
put_unless_changed "$config" host/Orlindex.config config 'delete it to get a new one'
rm -f "$config"
put_text README.txt <<END
Simulated sign-in
=================

$marker; run it again after a new build.

1. Copy the two files of host\\ to the folder of your host application. Orlindex.config names
   $windows_path\\Pellwick
   If the folder has another path on your machine, change "searchPaths" in that file, or set the value "Location" of the
   registry key HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrany\\Pellwick\\1.10.0 to the folder Pellwick.

   Use the Orlindex.dll of host\\: the plugin module is signed below the root of its build, and no other Orlindex.dll
   accepts it. Do not ship either.

2. Start your host and sign in. At first, every user is Sam Example. The first host starts Pellwick.exe. All hosts of the
   user share it, and it ends a minute after the last host.

3. Change Pellwick\\Pellwick.scenario.json: who signs in, what a login does, how long tokens last, what goes wrong.
   The schema beside it helps your editor. Then run
       Pellwick.exe --check-scenario Pellwick.scenario.json
       Pellwick.exe --quit          (the next start reads the new file)

In automatic tests, set PELLWICK_SCENARIO to a scenario file and PELLWICK_SIMULATOR_DATA to a folder for the logins and the
signing key, so that tests can run side by side. The log is
   %LocalAppData%\\Kestrany\\Identity Services\\Log\\IdServices.log
END

printf '%s\n' '' 'Next:' \
    "  1. Copy $folder/host/* beside your host application." \
    '  2. Start it, and sign in.' \
    "  3. Change $folder/Pellwick/Pellwick.scenario.json, and run Pellwick.exe --quit." \
    'See README.txt in that folder, and docs/agent.md.'
