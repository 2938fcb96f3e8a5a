#!/usr/bin/env bash
# Lays out simulated sign-in as a host's developer does, and runs the example host against it:
#     simulate-script.sh SOURCE-TREE BUILD-TREE
# Ends with 0 when all of it went as it should; the first thing that did not is named.

set -euo pipefail

source=$1
build=$2
work=$(mktemp -d)
folder="$work/a folder"
export PELLWICK_SIMULATOR_DATA="Z:${work//\//\\}\\data"

# Into a file, not a pipe: a server that the program starts goes on after it, with its output open.
run_windows()
{
    local status=0
    bash -c 'exec "$@"' run "$source/scripts/wine-run" "$@" </dev/null >"$work/output" 2>&1 || status=$?
    tr -d '\r' <"$work/output"
    return $status
}
finish()
{
    local status=$?
    [ ! -f "$folder/Pellwick/Pellwick.exe" ] || run_windows "$folder/Pellwick/Pellwick.exe" --quit || status=1
    rm -rf "$work"
    exit $status
}
trap finish EXIT

lay_out()
{
    bash "$source/scripts/simulate.sh" --build "$build" "$@" "$folder" 2>&1
}
expect()
{
    grep -qF -- "$2" <<<"$1" || { printf 'expected "%s" in:\n%s\n' "$2" "$1"; exit 1; }
}
run_host()
{
    run_windows "$folder/host/cpp_host.exe" || [ "${1:-}" = fails ]
}

expect "$(lay_out)" 'written     Pellwick/Pellwick.scenario.json'
expect "$(lay_out)" 'as it was   Pellwick/PellwickClient.dll'
cp "$build/examples/cpp_host.exe" "$folder/host/"
expect "$(run_host)" 'All steps succeeded.'

# The library converts an address that is no UTF-8 as the platform does; the agent refuses what comes of it.
cp "$build/tests/agent/agent_address_host.exe" "$folder/host/"
answers=$(run_windows "$folder/host/agent_address_host.exe")
expect "$answers" 'well-formed: 1000'
expect "$answers" 'surrogate: 4010'
expect "$answers" 'cut off: 4010'

# What the developer changed stays, and is what the next server plays.
scenario="$folder/Pellwick/Pellwick.scenario.json"
cp "$source/agent/scenarios/refuse.json" "$scenario"
expect "$(lay_out)" 'kept        Pellwick/Pellwick.scenario.json'
cmp "$scenario" "$source/agent/scenarios/refuse.json"
config="$folder/host/Orlindex.config"
expect "$(lay_out --windows-path 'D:\elsewhere')" 'written     host/Orlindex.config'
sed -i 's/elsewhere/of my own/' "$config"
expect "$(lay_out)" 'kept        host/Orlindex.config'
grep -q 'of my own' "$config"
rm "$config"
expect "$(lay_out)" 'written     host/Orlindex.config'
expect "$(run_windows "$folder/Pellwick/Pellwick.exe" --check-scenario "$scenario")" ': valid'
expect "$(run_windows "$folder/Pellwick/Pellwick.exe" --quit)" 'quit'
expect "$(run_host fails)" 'Login                code 4018'
printf '{ "user": [] }\n' >"$scenario"
if output=$(run_windows "$folder/Pellwick/Pellwick.exe" --check-scenario "$scenario"); then
    printf 'a wrong scenario was found valid: %s\n' "$output"
    exit 1
fi
expect "$output" ':1:3: user: unknown key; did you mean "users"?'
expect "$(lay_out --reset-scenario)" 'written     Pellwick/Pellwick.scenario.json'
cmp "$scenario" "$source/agent/scenarios/accept.json"

# A folder of somebody else's is left alone.
mkdir "$work/other"
touch "$work/other/file"
if bash "$source/scripts/simulate.sh" --build "$build" "$work/other" >/dev/null 2>&1; then
    printf 'a folder that holds other things was taken\n'
    exit 1
fi
[ "$(ls "$work/other")" = file ]
printf 'laid out, run, changed and reset\n'
