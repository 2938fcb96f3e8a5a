# Configuring and building by preset: sourced after common.sh, never run.
# shellcheck shell=bash

# configure_preset PRESET FOLDER [CMAKE-OPTIONS...]: where that was not done yet, or options are given, or presets or
# libraries have changed. Changes of CMake files are seen by the build itself.
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
    # From the source tree's root, where presets are found.
    (cd "$root" && cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"})
}

# make_preset PRESET FOLDER: both.
make_preset()
{
    configure_preset "$1" "$2" && build_preset "$1"
}

# make_what_builds PRESET FOLDER: both, past errors. What could not be brought up to date is removed and listed in
# FOLDER/not-built.txt, so that no old program is tested in its place.
make_what_builds()
{
    local preset=$1 folder=$2 status=0
    rm -f "$folder/not-built.txt"
    configure_preset "$preset" "$folder" || return
    (cd "$root" && cmake --build --preset "$preset" -j "$jobs" -- -k 0) || status=$?
    [ "$status" -eq 0 ] || remove_outdated "$folder"
    return "$status"
}

# The programs and modules that a build would still have to link. Read from a copy of its plan: for the plan itself the
# build system would first ask whether CMake has to run.
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
