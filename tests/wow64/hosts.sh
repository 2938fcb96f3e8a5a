#!/usr/bin/env bash
# A 32-bit host under 64-bit Windows, end to end: which registry view serves it, and which module. Ends with 77 where that
# is skipped.
#
# Each case lays out the sign-in agent at a registered location and runs the example host, which has to sign in or has to be
# told that there is no module.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"

build=$root/build/release32
skip()
{
    say "skipped: $1"
    exit 77
}
[ -f "$build/bin/Orlindex.dll" ] || skip "there is no 32-bit build"
[ -d "$deps/wine32/drive_c" ] || skip "this machine has no Wine for 32-bit programs; scripts/setup.sh --32-bit says why"

finish()
{
    local status=$?
    wine_session_end
    exit $status
}
trap finish EXIT

wine_template=$deps/wine32
wine_session_begin
host_folder=$WINEPREFIX/drive_c/host
server_folder=$WINEPREFIX/drive_c/sso
empty_folder=$WINEPREFIX/drive_c/empty
mkdir -p "$host_folder" "$server_folder" "$empty_folder"
cp "$build/bin/Orlindex.dll" "$build/examples/c_host.exe" "$host_folder/"
cp "$build/agent/Pellwick.exe" "$build/agent/PellwickClient.dll" "$server_folder/"

# modules KEY=PATH...: the version compatibility file, with one entry that has these keys.
modules()
{
    local pair keys=
    for pair in "$@"; do
        keys+="\"${pair%%=*}\": \"${pair#*=}\", "
    done
    printf '{ "ssoClientPlugin": [ { "module": "PellwickClient.dll", %s "version": "1.0",\n' "$keys"
    printf '    "compatibleSsoServicesVersion": { "minVersion": "1.11" } } ] }\n'
} >"$server_folder/TALIXVersionCompatibility.config"

# location VIEW FOLDER: registers a location in the view for 32 or for 64 bit; none for an empty folder.
location()
{
    local key='HKLM\SOFTWARE\Kestrany\Pellwick'
    if [ -n "$2" ]; then
        run_windows reg add "$key" /v Location /d "$2" /f "/reg:$1" >/dev/null 2>&1
    elif run_windows reg query "$key" "/reg:$1" >/dev/null 2>&1; then
        run_windows reg delete "$key" /f "/reg:$1" >/dev/null 2>&1
    fi
}

# expect TITLE yes|no: whether the host signs in.
expect()
{
    local output found=no status=0
    output=$(run_windows 'C:\host\c_host.exe') || status=$?
    if grep -qi 'login  *IdSuccess' <<<"$output"; then found=yes; fi
    if [ "$found" != "$2" ]; then
        say "$output" "(exit code $status)"
        fail "$1: signed in: $found, expected: $2"
    fi
    say "$1: signed in: $found"
}

module=C:/sso/PellwickClient.dll
location 32 'C:\sso'
location 64 ''
modules "modulePathWoW64=$module" 'modulePath=C:/sso/missing.dll'
expect 'the module for 32-bit hosts is the one that counts' yes
modules "modulePath=$module"
expect 'the module for 64-bit hosts is no replacement' no
cp "$build/agent/TALIXVersionCompatibility.config" "$server_folder/"
expect 'the file that the agent brings serves 32-bit hosts' yes
location 64 'C:\empty'
expect 'the 32-bit view comes first' yes
location 32 ''
location 64 'C:\sso'
expect 'a key in the 64-bit view alone is found' yes
location 32 'C:\empty'
expect 'a key in the 32-bit view hides the other' no
