# Shared by all scripts. Source this file; do not run it. Sets `root` (the source tree) and `deps` (the folder that setup.sh
# fills), and defines how scripts print messages.
# shellcheck shell=bash
# shellcheck disable=SC2034 # used by the scripts that source this file

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
deps=$root/.deps
jobs=$(nproc)

say()
{
    printf '%s\n' "$*"
}

# fail CAUSE [REMEDY...]: prints an error and ends the script.
fail()
{
    printf 'error: %s\n' "$1" >&2
    shift
    [ $# -eq 0 ] || printf '       %s\n' "$@" >&2
    exit 1
}

# now: the time in microseconds. seconds_since TIME: the seconds since a value of now().
now()
{
    printf '%s\n' "${EPOCHREALTIME//[.,]/}"
}
seconds_since()
{
    local tenths=$((($(now) - $1) / 100000))
    printf '%d.%d s\n' $((tenths / 10)) $((tenths % 10))
}

# usage FILE: prints the comment block at the beginning of a script, which is its help text.
usage()
{
    sed -n '2,/^[^#]/{s/^# \{0,1\}//p}' "$1"
}
