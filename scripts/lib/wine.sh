# A Wine session of one's own: sourced after common.sh, never run.
#
#     wine_session_begin      copies the template prefix into a new temporary folder and starts Wine in it; the template is
#                             what `wine_template` names
#     run_windows PROGRAM...  runs a program and prints its output, both streams in one, when it has ended
#     wine_session_end        ends every process of that prefix and removes it; fit for `trap ... EXIT`
#
# In between, scripts/wine-run runs programs in that prefix too.
# shellcheck shell=bash

# shellcheck source=scripts/lib/wine-environment.sh
. "$root/scripts/lib/wine-environment.sh"

wine_template=$deps/wine

wine_session_begin()
{
    [ -d "$wine_template/drive_c" ] || fail "no Wine prefix to copy: $wine_template" "run scripts/setup.sh first"
    wine_session_folder=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-wine.XXXXXX")
    export WINEPREFIX=$wine_session_folder/prefix
    cp -a "$wine_template" "$WINEPREFIX"
    wine_start -p || fail "Wine does not start in $WINEPREFIX"
    # Tells scripts/wine-run that it need not see to this itself.
    export ORLINDEX_WINE_SESSION=$WINEPREFIX
}

# Through a file, not a pipe. The server process that a host starts goes on after it, and under Wine it holds the host's
# error output open: a pipe's reader would wait for its end.
run_windows()
{
    local output=$wine_session_folder/output status=0
    "$root/scripts/wine-run" "$@" >"$output" 2>&1 </dev/null || status=$?
    tr -d '\r' <"$output"
    return "$status"
}

wine_session_end()
{
    [ -n "${wine_session_folder:-}" ] || return 0
    wineserver -k >/dev/null 2>&1
    wineserver -w >/dev/null 2>&1
    rm -rf "$wine_session_folder"
    unset wine_session_folder WINEPREFIX ORLINDEX_WINE_SESSION
}
