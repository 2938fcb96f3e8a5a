# Runs hosts in other languages under Wine, with the real library, the signed plugin module and the sign-in agent. Source this
# file after common.sh; do not run it.
#
#     install_library BUILD FOLDER          copies library and agent beside a program
#     copy_project BUILD PROJECT            makes the folder $work, with a copy of the project in which install.sh installed the
#                                           package, and with the library beside the program; it is removed when the test ends
#     build_dotnet_host FOLDER SOURCES...   compiles a host in C# against the package
#     run_host FOLDER SCENARIO PROGRAM...   runs a program in the folder, with data of its own and a scenario file; prints
#                                           its output
# shellcheck shell=bash
# shellcheck disable=SC2154 # root: common.sh sets it

install_library()
{
    cp "$1/bin/Orlindex.dll" "$1/agent/Pellwick.exe" "$1/agent/PellwickClient.dll" "$1/agent/TALIXVersionCompatibility.config" "$2"
}

copy_project()
{
    work=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-bindings.XXXXXX")
    trap 'rm -rf "$work"' EXIT
    cp -r "$2/." "$work"
    install_library "$1" "$work"
    export ORLINDEX_STANDIN="Z:${ORLINDEX_STANDIN//\//\\}"
}

# The output goes to a file: the server process continues after the host, and would keep a pipe open.
run_host()
{
    local folder=$1 scenario=$2 data status=0
    shift 2
    data=$(mktemp -d "$folder/data.XXXXXX")
    (
        cd "$folder"
        export PELLWICK_SIMULATOR_DATA="Z:${data//\//\\}" PELLWICK_SCENARIO="Z:${scenario//\//\\}"
        "$root/scripts/wine-run" "$@" >"$data/output" 2>&1 </dev/null || status=$?
        "$root/scripts/wine-run" Pellwick.exe --quit >"$data/quit" 2>&1 </dev/null || true # It may have ended before.
        exit "$status"
    ) || status=$?
    tr -d '\r' <"$data/output"
    rm -rf "$data"
    return "$status"
}

# The runtime of .NET for Windows, as a command.
# shellcheck disable=SC2034,SC2154 # for the scripts that source this file; deps: common.sh
dotnet=("$deps/bindings/node_modules/dotnet-2.0.0-win/dotnet.exe")

# build_dotnet_host FOLDER SOURCES...: compiles FOLDER/Host.dll against the package's assembly in the folder.
build_dotnet_host()
{
    local folder=$1
    shift
    mcs -langversion:7 -platform:x64 -warnaserror -target:exe -r:"$folder/Orlindex.Client.dll" -out:"$folder/Host.dll" "$@"
    printf '{"runtimeOptions": {"framework": {"name": "Microsoft.NETCore.App", "version": "2.0.0"}}}\n' \
        >"$folder/Host.runtimeconfig.json"
}
