#!/usr/bin/env bash
# Makes the pictures that the pages show: scripts/pictures.sh [options]
#
# Builds the release (scripts/build.sh), runs the example host with a window on a display in memory, with simulated users, then the
# window in which users sign in with a provider, and writes docs/images/*.png. Look at the pictures before you commit them.
#
#   --build-dir FOLDER   uses this build and builds nothing
#   --output FOLDER      writes the pictures to this folder
#   --help               prints this text

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"
# shellcheck source=scripts/lib/build.sh
. "$root/scripts/lib/build.sh"
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
if [ -z "$build" ]; then
    build=$root/build/release
    bash "$root/scripts/build.sh" release
    # What operates the host's window, and what shows the sign-in window.
    build_preset mingw-release window_driver openid_window_tests
fi

# show NAME COMMAND...: operates the host, and makes a picture of what it shows then.
show()
{
    local name=$1
    shift
    drive activate "$@" >/dev/null || fail "the host does not show what $name.png shall show"
    press alt+e # away from the texts: no caret blinks in them
    drive focus "$events"
    picture "$output/$name.png" 100%x25%+0+0
    say "  $name.png"
}

# show_sign_in MODE: the window in which a user signs in with a provider, in the browser or on another device.
show_sign_in()
{
    start_window 'Sign in' "$build/bin/openid_window_tests.exe" --show "$1"
    picture "$output/sign-in-$1.png"
    drive close
    end_of_window
    say "  sign-in-$1.png"
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

show_sign_in browser
show_sign_in device
