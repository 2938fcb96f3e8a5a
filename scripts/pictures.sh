#!/usr/bin/env bash
# Makes the pictures that the pages show: scripts/pictures.sh [options]
#
# Builds the release (scripts/build.sh), runs the example host with a window on a display in memory, with simulated users, and
# writes docs/images/*.png. Look at the pictures before you commit them.
#
#   --build-dir FOLDER   uses this build and builds nothing
#   --output FOLDER      writes the pictures to this folder
#   --help               prints this text

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"
# shellcheck source=scripts/lib/display.sh
. "$root/scripts/lib/display.sh"
# shellcheck source=scripts/lib/desktop-host.sh
. "$root/scripts/lib/desktop-host.sh"

build=
output=$root/docs/images
while [ $# -gt 0 ]; do
    case $1 in
        --help | -h) usage "$0"; exit ;;
        --build-dir | --output)
            [ -n "${2:-}" ] || fail "$1 needs a folder" "scripts/pictures.sh --help prints the options"
            if [ "$1" = --build-dir ]; then build=$2; else output=$2; fi
            shift
            ;;
        *) fail "unknown argument: $1" "scripts/pictures.sh --help prints the options" ;;
    esac
    shift
done
display_is_there || fail "Xvfb, xdotool or ImageMagick is not installed" "scripts/setup.sh installs them"
if [ -z "$build" ]; then
    build=$root/build/release
    bash "$root/scripts/build.sh" release
fi

# show NAME COMMAND...: operates the host, and makes a picture of what it shows then. Several equal pictures in a row show that
# the window has drawn itself.
show()
{
    local name=$1 before=none now=
    shift
    drive activate "$@" >/dev/null || fail "the host does not show what $name.png shall show"
    press alt+e # away from the texts: no caret blinks in them
    drive focus "$events"
    while [ "$before" != "$now" ]; do
        before=$now
        picture "$output/$name.png"
        now=$(convert "$output/$name.png" -crop 100%x25%+0+0 rgba:- | sha256sum)
    done
    say "  $name.png"
}

trap display_end EXIT
mkdir -p "$output"
say "Pictures in $output"
display_begin
lay_out_host "$build"
status=$(control STATUS) sign_in=$(control SIGN_IN) events=$(control EVENTS)

# shellcheck disable=SC2119 # without a scenario of its own
start_host
show desktop-host-signed-in text "$status" 'Not signed in' press "$sign_in" text "$status" 'Signed in' \
    row "$events" 'Token available'
close_host

run_windows reg add 'HKCU\Software\Microsoft\Windows\CurrentVersion\Themes\Personalize' /v AppsUseLightTheme /t REG_DWORD \
    /d 0 /f >/dev/null
# shellcheck disable=SC2119 # without a scenario of its own
start_host
show desktop-host-dark text "$status" 'Not signed in' press "$sign_in" text "$status" 'Signed in' row "$events" 'Token available'
close_host
run_windows reg delete 'HKCU\Software\Microsoft\Windows\CurrentVersion\Themes\Personalize' /f >/dev/null

# The page shows the command with a folder that reads like one of Windows.
installed="$WINEPREFIX/drive_c/Program Files/Example Host"
mkdir -p "$installed"
cp "$host_folder/desktop_host.exe" "$host_folder/Orlindex.dll" "$installed/"
start_window "$host_title" 'C:\Program Files\Example Host\desktop_host.exe'
show desktop-host-failed-start text "$status" 'Sign-in is not available'
drive close
end_of_window
