# The example host with a window, in an installation with the sign-in agent. Source this file after display.sh; do not run it.
#
#     lay_out_host BUILD               makes the installation in a folder of the display: `host_folder`, `agent_folder`
#     start_host [SCENARIO-FILE]       starts the host for the simulated users of the scenario, and waits for its window
#     control NAME                     prints the number of a control, which the host's resource.h calls IDC_<NAME>
#     close_host                       closes the window, waits for the end of the host, and expects the exit code 0
#     quit_agent                       ends the server application; its logins stay
#
# Every start has new logins unless `keep_logins` is set.
# shellcheck shell=bash
# shellcheck disable=SC2154 # display_folder, root: set by the files that are sourced before

host_title='Orlindex desktop host'
keep_logins=''

lay_out_host()
{
    host_folder=$display_folder/host
    agent_folder=$display_folder/Pellwick
    mkdir "$host_folder" "$agent_folder"
    window_driver=$1/bin/window_driver.exe
    cp "$1/examples/desktop_host.exe" "$1/bin/Orlindex.dll" "$host_folder/"
    cp "$1/agent/Pellwick.exe" "$1/agent/PellwickClient.dll" "$1/agent/TALIXVersionCompatibility.config" "$agent_folder/"
    sed "s|\"searchPaths\": \"\"|\"searchPaths\": \"Z:$agent_folder\"|" "$root/agent/installation/host/Orlindex.config" \
        >"$host_folder/Orlindex.config"
    grep -q "$agent_folder" "$host_folder/Orlindex.config" || fail "the client config file does not name the agent"
}

windows_path()
{
    printf 'Z:%s\n' "${1//\//\\}"
}

# shellcheck disable=SC2120 # the argument is optional
start_host()
{
    [ -n "$keep_logins" ] || data_folder=$(mktemp -d "$display_folder/data.XXXXXX")
    PELLWICK_SIMULATOR_DATA=$(windows_path "$data_folder")
    PELLWICK_SCENARIO=$(windows_path "${1:-$root/agent/scenarios/accept.json}")
    export PELLWICK_SIMULATOR_DATA PELLWICK_SCENARIO
    start_window "$host_title" "$host_folder/desktop_host.exe"
}

control()
{
    local number
    [ "$1" != CANCEL ] || { printf '2\n'; return; } # IDCANCEL
    number=$(sed -n "s/^#define IDC_$1 \([0-9]*\)$/\1/p" "$root/examples/desktop_host/resource.h")
    [ -n "$number" ] || fail "the host has no control $1"
    printf '%s\n' "$number"
}

close_host()
{
    drive close >/dev/null
    end_of_window || fail "the host ended with $?"
    quit_agent
}

quit_agent()
{
    run_windows "$agent_folder/Pellwick.exe" --quit >/dev/null
}
