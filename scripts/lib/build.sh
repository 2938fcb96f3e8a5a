# Configures and builds presets. Source this file after common.sh; do not run it.
# shellcheck shell=bash

# configure_preset PRESET FOLDER [CMAKE-OPTIONS...]: configures if this was not done yet, if options are given, or if presets or
# libraries have changed. The build itself notices changed CMake files.
configure_preset()
{
    local preset=$1 folder=$2 key
    shift 2
    key=$(cat "$root/CMakePresets.json" <(ls "$deps/stamps") | sha256sum)
    if [ $# -gt 0 ] || [ ! -f "$folder/build.ninja" ] || [ "$(cat "$folder/.configured" 2>/dev/null)" != "$key" ]; then
        (cd "$root" && cmake --preset "$preset" "$@") || return
        printf '%s\n' "$key" >"$folder/.configured"
    fi
}

# build_preset PRESET [TARGETS...]
build_preset()
{
    local preset=$1
    shift
    # CMake looks for presets in the current directory.
    (cd "$root" && cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"})
}

# make_preset PRESET FOLDER: configures and builds.
make_preset()
{
    configure_preset "$1" "$2" && build_preset "$1"
}

# make_what_builds PRESET FOLDER: configures and builds, and continues after errors. Programs that could not be updated are
# removed and listed in FOLDER/not-built.txt, so that no old program is tested.
make_what_builds()
{
    local preset=$1 folder=$2 status=0
    rm -f "$folder/not-built.txt"
    configure_preset "$preset" "$folder" || return
    (cd "$root" && cmake --build --preset "$preset" -j "$jobs" -- -k 0) || status=$?
    [ "$status" -eq 0 ] || remove_outdated "$folder"
    return "$status"
}

# Removes the programs and modules that the build would still have to link. Uses a copy of build.ninja, because ninja would
# first check whether CMake has to run again for the original.
remove_outdated()
{
    local folder=$1 file
    cp "$folder/build.ninja" "$folder/plan.ninja" || return
    ninja -C "$folder" -f plan.ninja -n -k 0 2>/dev/null |
        sed -nE 's/^\[[0-9]+\/[0-9]+\] Linking C(XX)? (executable|shared library|shared module) //p' |
        while IFS= read -r file; do
            rm -f "$folder/$file"
            printf '%s\n' "${file##*/}"
        done >"$folder/not-built.txt"
    rm -f "$folder/plan.ninja"
}
