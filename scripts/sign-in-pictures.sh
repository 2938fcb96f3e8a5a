#!/usr/bin/env bash
# Shows the sign-in window on a virtual screen: scripts/sign-in-pictures.sh PROGRAM [--tests [GOOGLETEST-ARGUMENTS...]]
#
# PROGRAM is openid_window_tests.exe of a build. The script takes a picture of the window in both modes, and writes
# docs/sign-in-browser.png and docs/sign-in-device.png.
#
#   --tests   runs the program's tests on the virtual screen instead
#   --help    prints this text
#
# It needs Xvfb, and for pictures xdotool and ImageMagick's import. The exit code is 77 if they are missing.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"
# shellcheck source=scripts/lib/wine-environment.sh
. "$root/scripts/lib/wine-environment.sh"

need()
{
    local tool
    for tool in "$@"; do
        command -v "$tool" >/dev/null || { say "skipped: $tool is not installed"; exit 77; }
    done
}

# Starts the screen. It chooses a free number, and says so when it is ready.
start_screen()
{
    exec 8< <(exec Xvfb -displayfd 1 -screen 0 1280x800x24 -nolisten tcp 2>/dev/null)
    screen=$!
    local number
    read -r -t 60 number <&8 || fail "Xvfb did not start"
    export DISPLAY=:$number
}

# A prefix of its own: a session that began without a screen has none until its end.
start_wine()
{
    prefix=$(mktemp -d)
    cp -a "$deps/wine" "$prefix/wine"
    export WINEPREFIX=$prefix/wine
    wine_start -p5
}

clean_up()
{
    [ -z "${WINEPREFIX:-}" ] || wineserver -k || true
    [ -z "${screen:-}" ] || kill "$screen" 2>/dev/null || true
    [ -z "${prefix:-}" ] || { wineserver -w || true; rm -rf "$prefix"; }
}

take_picture()
{
    local mode=$1 file=$2 window shown
    "$wine64" "$program" --show "$mode" >/dev/null 2>&1 </dev/null &
    shown=$!
    window=$(timeout 120 xdotool search --sync --onlyvisible --name '^Sign in$' | tail -n 1) || fail "no window came"
    # The window is drawn when two pictures of it are equal.
    local before='' after=none
    while [ "$before" != "$after" ]; do
        before=$after
        sleep 1
        after=$(import -window "$window" png:- | sha256sum)
    done
    import -window "$window" +set date:create +set date:modify -strip "$file"
    xdotool key --window "$window" Escape
    wait "$shown"
    say "$file"
}

main()
{
    case ${1:-} in
        --help | -h) usage "$0"; return ;;
        '') fail "no program is named" "scripts/sign-in-pictures.sh --help prints the arguments" ;;
    esac
    program=$1
    shift
    trap clean_up EXIT
    if [ "${1:-}" = --tests ]; then
        need Xvfb
        start_screen
        start_wine
        "$wine64" "$program" "${@:2}"
    else
        need Xvfb xdotool import
        start_screen
        start_wine
        take_picture browser "$root/docs/sign-in-browser.png"
        take_picture device "$root/docs/sign-in-device.png"
    fi
}

main "$@"
