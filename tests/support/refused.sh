# What a script refuses, with a cause and before it does anything. Source this file after common.sh; do not run it.
# shellcheck shell=bash
# shellcheck disable=SC2154 # work: the folder for the output of the script, set by the script that sources this file

# refused SCRIPT TEXT ARGUMENTS...: the script refuses the arguments with an error that contains the text.
refused()
{
    local script=$1 text=$2 output
    shift 2
    if output=$(bash "$script" --output "$work/out" "$@" 2>&1); then fail "taken: $*" "$output"; fi
    grep -q "^error: .*$text" <<<"$output" || fail "$* is not refused for '$text':" "$output"
    [ ! -e "$work/out" ] || fail "$* left something behind"
}
