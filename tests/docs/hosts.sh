#!/usr/bin/env bash
# Runs the hosts that the pages show, in an installation that is laid out as docs/deployment.md says: its files, its
# registry commands, and a plugin module that was signed by its command.
#
#     hosts.sh BUILD SAMPLES COMMANDS      folders of the build, of the samples compiled and of the commands run before

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=scripts/lib/common.sh
. "$here/../../scripts/lib/common.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"

build=$1 samples=$2 commands=$3
trap wine_session_end EXIT
wine_session_begin
programs="$WINEPREFIX/drive_c/Program Files"
host="$programs/Example Host"
server="$programs/Kestrany/Pellwick 1.10.0"
mkdir -p "$host" "$server"

# run_host EXPECTED-STATUS EXPECTED-TEXT PROGRAM: the program lies in the host's folder and runs in another one.
run_host()
{
    local status=0 output
    output=$(cd "$programs" && run_windows "C:\\Program Files\\Example Host\\$3") || status=$?
    [ "$status" -eq "$1" ] || fail "$3 ended with $status, not with $1:" "$output"
    grep -q "$2" <<<"$output" || fail "$3 did not print '$2':" "$output"
    say "$3: $2"
}

cp "$build/bin/Orlindex.dll" "$commands/getting-started/sign_in_c.exe" "$commands/getting-started/sign_in_cpp.exe" "$host"
cp "$samples/README-1.exe" "$host/readme.exe"
python3 -B "$here/samples.py" files docs/deployment.md "$WINEPREFIX/samples"
cp "$WINEPREFIX/samples/Orlindex.config" "$host"
for program in sign_in_c.exe sign_in_cpp.exe; do
    run_host 3 'sign-in is not available: 3005' $program
done
run_host 1 'Sign-in is not available' readme.exe

# As the server application's installer does.
cp "$build/agent/Pellwick.exe" "$commands/deployment/PellwickClient.dll" \
    "$WINEPREFIX/samples/TALIXVersionCompatibility.config" "$server"
count=0
python3 -B "$here/samples.py" windows docs/deployment.md >"$WINEPREFIX/samples/commands"
while IFS= read -r command; do
    printf '%s\r\n' '@echo off' "$command" >"$WINEPREFIX/drive_c/command.bat"
    run_windows cmd /c 'C:\command.bat' >/dev/null || fail "this command of the page fails: $command"
    count=$((count + 1))
done <"$WINEPREFIX/samples/commands"
[ "$count" -gt 0 ] || fail "docs/deployment.md has no command for the registry"

run_host 0 'signed in, 1000' sign_in_c.exe
run_host 0 'signed in, 1000' sign_in_cpp.exe
run_host 0 'signed in, the token expires at' readme.exe
