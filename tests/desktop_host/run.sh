#!/usr/bin/env bash
# Runs one test of the example host with a window, on a display of its own: run.sh BUILD TEST
#
# The real Orlindex.dll loads the signed module of the sign-in agent.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../scripts/lib/common.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"
# shellcheck source=scripts/lib/display.sh
. "$root/scripts/lib/display.sh"
# shellcheck source=scripts/lib/desktop-host.sh
. "$root/scripts/lib/desktop-host.sh"

build=$1 test=$2

finish()
{
    local status=$?
    trap - EXIT
    if [ "$status" -ne 0 ] && [ -n "${host_folder:-}" ]; then
        # A host that was killed leaves the server application.
        kill_window
        quit_agent || true
    fi
    display_end
    exit "$status"
}
trap finish EXIT

# expect COMMAND...: operates the window and shows what the driver prints.
expect()
{
    say "  $*"
    drive "$@" || fail "failed: $*"
}

scenario()
{
    local file
    file=$(mktemp "$display_folder/scenario.XXXXXX")
    cat >"$file"
    printf '%s\n' "$file"
}

load_controls()
{
    status=$(control STATUS) progress=$(control PROGRESS) sign_in=$(control SIGN_IN) sign_out=$(control SIGN_OUT)
    renew=$(control RENEW) cancel=$(control CANCEL) user=$(control USER) token=$(control TOKEN)
    message=$(control MESSAGE) copy=$(control COPY) events=$(control EVENTS)
}

# A user who does nothing until the sign-in is cancelled.
waiting_user()
{
    scenario <<'END'
{ "login": { "behavior": "wait", "waitSeconds": 600 } }
END
}

# --- Tests ----------------------------------------------------------------------------------------------------------

the_user_signs_in_and_out()
{
    start_host
    expect text "$status" 'Not signed in' enabled "$sign_in" disabled "$sign_out" disabled "$renew" disabled "$cancel" \
        hidden "$progress" hidden "$message" hidden "$copy" focus "$sign_in" press "$sign_in" text "$status" 'Signed in' \
        text "$user" 'Sam Example (simulator)' text "$token" 'Expires in 0:5' row "$events" '| Signed in | 1000 (IdSuccess)' \
        row "$events" '| Token available | 1000 (IdSuccess)' disabled "$sign_in" enabled "$sign_out" enabled "$renew"

    # The expiry counts down.
    local before
    before=$(drive print "$token")
    expect text "$token" 'Expires in 0:5' changed "$token" "$before"

    expect press "$sign_out" text "$status" 'Not signed in' row "$events" '| Signed out | 1000 (IdSuccess)' enabled "$sign_in" \
        disabled "$sign_out"
    [ -z "$(drive print "$user")$(drive print "$token")" ] || fail "the user is still shown"
    close_host
}

a_login_outlives_the_program()
{
    start_host
    expect text "$status" 'Not signed in' press "$sign_in" text "$status" 'Signed in'
    close_host
    keep_logins=yes
    start_host
    expect text "$status" 'Signed in' text "$user" 'Sam Example (simulator)' text "$token" 'Expires in '
    close_host
}

another_host_signs_the_user_out()
{
    start_host
    expect text "$status" 'Not signed in' press "$sign_in" text "$status" 'Signed in'
    cp "$build/examples/cpp_host.exe" "$host_folder/"
    run_windows "$host_folder/cpp_host.exe" | tail -n 1
    expect row "$events" '| Signed out | 1000' text "$status" 'Not signed in' enabled "$sign_in"
    close_host
}

an_expired_token_is_renewed()
{
    start_host "$(scenario <<'END'
{ "tokens": { "lifetimeSeconds": 3 } }
END
)"
    expect text "$status" 'Not signed in' press "$sign_in" text "$status" 'Signed in' text "$token" 'Expired' \
        enabled "$renew" press "$renew" row "$events" '| Token renewed | 1000 (IdSuccess)' text "$status" 'Signed in'
    close_host
}

a_failed_sign_in_is_explained()
{
    start_host "$root/agent/scenarios/refuse.json"
    expect text "$status" 'Not signed in' press "$sign_in" shown "$message" text "$message" 'The sign-in failed.' \
        text "$message" 'Code 4018: The sign-in was refused.' text "$status" 'Not signed in' hidden "$copy" enabled "$sign_in" \
        layout 96
    close_host
}

a_failed_start_is_explained()
{
    # The server application is not installed.
    rm "$host_folder/Orlindex.config"
    start_host
    local command
    command="orlindex-doctor --host \"$(windows_path "$host_folder")\" --load"
    expect text "$status" 'Sign-in is not available' shown "$message" text "$message" 'Code 3005 (IdClientUnavailable): The sign-in' \
        text "$message" "$command" disabled "$sign_in" disabled "$sign_out" disabled "$renew" disabled "$cancel" \
        hidden "$progress" layout 96 names press "$copy" clipboard "$command"

    # The command is right: the tool finds the cause.
    cp "$build/tools/orlindex-doctor.exe" "$host_folder/"
    printf '@cd /d %s\r\n@%s\r\n' "$(windows_path "$host_folder")" "$command" >"$display_folder/command.bat"
    run_windows cmd /c "$(windows_path "$display_folder/command.bat")" >"$display_folder/report" || true
    grep 'Pellwick.exe' "$display_folder/report" | grep '^Cause:' || fail "the doctor named no cause:" \
        "$(cat "$display_folder/report")"
    drive close
    end_of_window || fail "the host ended with $?"
}

an_untrusted_module_is_not_loaded()
{
    cp "$build/agent/unsigned/PellwickClient.dll" "$agent_folder/"
    start_host
    expect text "$status" 'Sign-in is not available' text "$message" '3005 (IdClientUnavailable)'
    drive close
    end_of_window || fail "the host ended with $?"
}

the_window_responds_while_a_login_waits()
{
    start_host "$(waiting_user)"
    expect text "$status" 'Not signed in' press "$sign_in" text "$status" 'Signing in...' shown "$progress" disabled "$sign_in" \
        enabled "$cancel" focus "$cancel" responsive 1000 layout 96 responsive 100 text "$status" 'Signing in...'
    expect press "$cancel" text "$message" 'The sign-in was cancelled.' text "$status" 'Not signed in' hidden "$progress" \
        enabled "$sign_in" disabled "$cancel"
    # And again: nothing is left of the first attempt.
    expect press "$sign_in" text "$status" 'Signing in...' hidden "$message" press "$cancel" text "$status" 'Not signed in' \
        text "$message" 'The sign-in was cancelled.'
    close_host
}

a_login_that_waits_ends_when_the_window_closes()
{
    start_host "$(waiting_user)"
    expect text "$status" 'Not signed in' press "$sign_in" text "$status" 'Signing in...' enabled "$cancel"
    close_host
}

the_keyboard_operates_everything()
{
    start_host "$(waiting_user)"
    expect text "$status" 'Not signed in' activate focus "$sign_in" names
    # Enter presses the default button, and Esc cancels.
    press Return
    expect text "$status" 'Signing in...' focus "$cancel"
    press Escape
    expect text "$status" 'Not signed in' shown "$message"
    # The focus went to the message. Tab goes on in the order of the controls, and back.
    expect focus "$message"
    press Tab
    expect focus "$events"
    press Tab
    expect focus "$sign_in"
    press Tab
    expect focus "$user"
    press shift+Tab
    expect focus "$sign_in"
    # Mnemonics: of a button, and of a label, which leads to its field.
    press alt+t
    expect focus "$token"
    press alt+e
    expect focus "$events"
    press alt+s
    expect text "$status" 'Signing in...' focus "$cancel"
    press alt+c
    expect text "$status" 'Not signed in'
    # The user signs in by keyboard alone.
    drive close
    end_of_window
    quit_agent
    start_host
    expect text "$status" 'Not signed in' activate focus "$sign_in"
    press Tab
    expect focus "$user"
    press Return
    expect text "$status" 'Signed in'
    # A button that began something has the focus again afterwards, or the next one if it is disabled.
    press alt+r
    expect row "$events" '| Token renewed |' enabled "$renew" focus "$renew"
    press alt+o
    expect text "$status" 'Not signed in' focus "$sign_in"
    press alt+F4
    end_of_window
    quit_agent
}

the_window_follows_the_resolution()
{
    start_host
    expect text "$status" 'Not signed in' layout 96
    local before after
    before=$(drive size)
    expect resolution 96 144 layout 144 resolution 144 192 layout 192
    after=$(drive size)
    say "  $before at 96, $after at 192"
    [ "$after" = "$((2 * ${before% *})) $((2 * ${before#* }))" ] || fail "the window was not scaled"
    expect resolution 192 96 layout 96
    close_host

    # And from the start, with a message.
    run_windows reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d 144 /f >/dev/null
    rm "$host_folder/Orlindex.config"
    start_host
    expect text "$status" 'Sign-in is not available' layout 144
    drive close
    end_of_window
}

# brightness: of the window, from 0 to 99.
brightness()
{
    picture "$display_folder/window.png"
    convert "$display_folder/window.png" -colorspace gray -format '%[fx:int(100*mean)]' info:
}

set_dark()
{
    run_windows reg add 'HKCU\Software\Microsoft\Windows\CurrentVersion\Themes\Personalize' /v AppsUseLightTheme \
        /t REG_DWORD /d $((1 - $1)) /f >/dev/null
}

# expect_brightness LEAST MOST WHEN: waits, because the window draws itself after it responded.
expect_brightness()
{
    local measured='' end=$((SECONDS + 180))
    while [ "$SECONDS" -lt "$end" ]; do
        measured=$(brightness)
        if [ "$measured" -ge "$1" ] && [ "$measured" -le "$2" ]; then
            say "  brightness $measured $3"
            return 0
        fi
    done
    fail "the brightness is $measured, not $1 to $2, $3"
}

the_window_is_light_or_dark()
{
    start_host
    expect text "$status" 'Not signed in'
    expect_brightness 80 99 'in the light setting'
    set_dark 1
    expect setting-changed ImmersiveColorSet
    expect_brightness 0 30 'in the dark setting'
    set_dark 0
    expect setting-changed ImmersiveColorSet
    expect_brightness 80 99 'in the light setting again'
    close_host

    set_dark 1
    start_host
    expect text "$status" 'Not signed in'
    expect_brightness 0 30 'after a start in the dark setting'
    close_host
}

display_begin
lay_out_host "$build"
load_controls
"$test"
say "passed: ${test//_/ }"
