# What every start of Wine here has in common: sourced by plain sh and by bash, never run.
# shellcheck shell=sh

WINEDEBUG=${WINEDEBUG:--all}
# Without winedbg a crashing program ends with its exception code; with it, now and then, with 0, and a test would
# pass. mscoree and mshtml would ask to download their packages, and winemenubuilder writes menus into the user's home.
WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe,winemenubuilder.exe="
# Without a UTF-8 locale Wine has no file names but those in plain ASCII.
LC_ALL=C.UTF-8
export WINEDEBUG WINEDLLOVERRIDES LC_ALL
unset DISPLAY WAYLAND_DISPLAY

wine64=/usr/lib/wine/wine64

# wine_start WINESERVER-OPTION: starts Wine in $WINEPREFIX with its output out of the way; answers 2 where it runs
# already. The first program of a session hands its stdout to Wine's services, and whoever reads that pipe (CTest, a
# caller's `$(...)`) would wait until they end: hence a first program without output.
wine_start()
{
    wineserver "$1" >/dev/null 2>&1 </dev/null || return
    "$wine64" cmd /c exit >/dev/null 2>&1 </dev/null
}
