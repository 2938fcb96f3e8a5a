# Shared by the scripts of this folder: sourced, never run. Sets `root` (the source tree) and `deps` (what setup.sh
# makes), and gives the few ways in which scripts speak to people.
# shellcheck shell=bash
# shellcheck disable=SC2034 # used by the scripts that source this file

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
deps=$root/.deps
jobs=$(nproc)

say()
{
    printf '%s\n' "$*"
}

# fail CAUSE [WAY-OUT...]: ends the script.
fail()
{
    printf 'error: %s\n' "$1" >&2
    shift
    [ $# -eq 0 ] || printf '       %s\n' "$@" >&2
    exit 1
}

# Seconds since the first argument, a value of now().
now()
{
    printf '%s\n' "${EPOCHREALTIME//[.,]/}"
}
seconds_since()
{
    local tenths=$((($(now) - $1) / 100000))
    printf '%d.%d s\n' $((tenths / 10)) $((tenths % 10))
}

# usage FILE: prints the comment block at the head of a script, which is its help text.
usage()
{
    sed -n '2,/^[^#]/{s/^# \{0,1\}//p}' "$1"
}
