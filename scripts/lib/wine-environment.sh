# The settings for every start of Wine in this tree. Source this file from sh or bash; do not run it.
# shellcheck shell=sh

WINEDEBUG=${WINEDEBUG:--all}
# Without winedbg, a crashing program ends with its exception code. With winedbg, it sometimes ends with 0, and a test would
# pass. mscoree and mshtml would offer to download packages. winemenubuilder would write menus into the user's home folder.
WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe,winemenubuilder.exe="
# Without a UTF-8 locale, Wine only supports file names in plain ASCII.
LC_ALL=C.UTF-8
export WINEDEBUG WINEDLLOVERRIDES LC_ALL
# Windows programs have no display of the user, only one that scripts/lib/display.sh made for them.
unset DISPLAY WAYLAND_DISPLAY
[ -z "${ORLINDEX_DISPLAY:-}" ] || export DISPLAY="$ORLINDEX_DISPLAY"

wine64=/usr/lib/wine/wine64

# wine_start WINESERVER-OPTION: starts Wine in $WINEPREFIX without output; returns 2 if it already runs. Wine's services
# inherit the standard output of the first program of a session. Whoever reads that pipe (CTest, a caller's `$(...)`) would
# wait until the services end. The first program therefore has no output.
wine_start()
{
    wineserver "$1" >/dev/null 2>&1 </dev/null || return
    "$wine64" cmd /c exit >/dev/null 2>&1 </dev/null
}
