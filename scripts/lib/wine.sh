# A separate Wine session. Source this file after common.sh; do not run it.
#
#     wine_session_begin      copies the template prefix (`wine_template`) to a new temporary folder and starts Wine in it
#     run_windows PROGRAM...  runs a program and prints its output, both streams together, after it has ended
#     wine_session_end        ends every process of that prefix and removes it; suitable for `trap ... EXIT`
#
# During the session, scripts/wine-run also runs programs in that prefix.
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
    [ -z "${ORLINDEX_DISPLAY:-}" ] || add_fonts
    wine_start -p || fail "Wine does not start in $WINEPREFIX"
    # With this, scripts/wine-run does not start a session itself.
    export ORLINDEX_WINE_SESSION=$WINEPREFIX
}

# For windows: the font of texts, and the one that contains the symbols of title bars. Debian's Wine does not look into the
# folder that Debian's package with its fonts has.
add_fonts()
{
    local font
    for font in tahoma tahomabd marlett; do
        [ ! -f "/usr/share/wine/fonts/$font.ttf" ] || ln -s "/usr/share/wine/fonts/$font.ttf" "$WINEPREFIX/drive_c/windows/Fonts/"
    done
}

# The output goes to a file, not to a pipe. The server process that a host starts continues after the host, and under Wine it
# keeps the host's error output open: the reader of a pipe would wait until the server ends.
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
