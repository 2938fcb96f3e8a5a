# A display in memory for programs with windows. Source this file after common.sh and wine.sh; do not run it.
#
#     display_begin           starts a display of its own, and a Wine session that uses it; fails if a program is missing, which
#                             scripts/setup.sh installs
#     display_end             ends both; suitable for `trap ... EXIT`
#     start_window TITLE PROGRAM...   starts a Windows program in the background and waits for its window
#     drive COMMAND...        operates the window that was started last, with the program in `window_driver` (tests/window)
#     end_of_window           waits for the end of its program, three minutes at most, and returns the program's exit code
#     kill_window             ends its program
#     press KEY...            presses keys, with the names of xdotool; the active window receives them
#     picture FILE [PART]     writes a picture of the window to a PNG file, when it has drawn itself; PART, a geometry of
#                             ImageMagick, is where it shows that: the rest may change
#
# A Wine session has windows only if it began with a display. The sessions of other tests have none.
# shellcheck shell=bash
# shellcheck disable=SC2154 # window_driver: set by the scripts that source this file

window_title='' window_process=''

display_begin()
{
    local program
    for program in Xvfb xdotool import convert; do
        command -v "$program" >/dev/null || fail "$program is not installed" "scripts/setup.sh installs it"
    done
    display_folder=$(mktemp -d "${TMPDIR:-/tmp}/orlindex-display.XXXXXX")
    # The server chooses a free number and writes it when it is ready. Without -noreset, it would start anew, with another
    # keyboard, each time its last program ends.
    mkfifo "$display_folder/number"
    Xvfb -displayfd 5 -screen 0 1280x1024x24 -nolisten tcp -noreset 5>"$display_folder/number" \
        >"$display_folder/log" 2>&1 </dev/null &
    display_process=$!
    local number=
    read -r number <"$display_folder/number" || true
    [ -n "$number" ] || fail "the display did not start:" "$(cat "$display_folder/log")"
    export ORLINDEX_DISPLAY=:$number DISPLAY=:$number
    wine_session_begin
    # There is no window manager. Unmanaged windows set the focus themselves, and Wine draws their title bars.
    run_windows reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null
}

display_end()
{
    kill_window
    # The display ends also if the session fails to.
    wine_session_end || true
    if [ -n "${display_process:-}" ]; then
        kill "$display_process" 2>/dev/null || true
        wait "$display_process" 2>/dev/null || true
    fi
    [ -z "${display_folder:-}" ] || rm -rf "$display_folder"
    unset display_folder display_process ORLINDEX_DISPLAY DISPLAY
}

start_window()
{
    window_title=$1
    shift
    begin_program "$@"
    local waiting ended=0
    drive >"$display_folder/appearance" &
    waiting=$!
    wait -n "$window_process" "$waiting" || ended=$?
    # Rarely, Wine ends before the program began (see scripts/wine-run).
    if ! kill -0 "$window_process" 2>/dev/null && [ "$ended" -ne 0 ] && [ ! -s "$display_folder/program" ]; then
        printf 'ended with %s: %s\n' "$ended" "$*" >>"$WINEPREFIX/silent-starts"
        begin_program "$@"
    fi
    wait "$waiting" || fail "the window '$window_title' did not appear:" "$(cat "$display_folder/appearance" \
        "$display_folder/program")"
}

# Not by scripts/wine-run: `window_process` is the program itself, so that it can be killed.
begin_program()
{
    "$wine64" "$@" >"$display_folder/program" 2>&1 </dev/null &
    window_process=$!
}

drive()
{
    run_driver "$@" | tr -d '\r'
}

# Its own output file, not that of run_windows: it may run while another program does.
run_driver()
{
    local output status=0
    output=$(mktemp "$display_folder/driver.XXXXXX")
    "$root/scripts/wine-run" "$window_driver" "$window_title" "$@" >"$output" 2>&1 </dev/null || status=$?
    cat "$output"
    rm -f "$output"
    return "$status"
}

end_of_window()
{
    local limit status=0
    sleep 180 &
    limit=$!
    wait -n "$window_process" "$limit" || status=$?
    kill -0 "$limit" 2>/dev/null || fail "the program of '$window_title' does not end"
    # Before `sleep` itself runs, bash would take note of another signal, and lose it.
    kill -KILL "$limit"
    wait "$limit" 2>/dev/null || true
    window_process=
    return "$status"
}

kill_window()
{
    [ -n "$window_process" ] || return 0
    kill -KILL "$window_process" 2>/dev/null || true
    wait "$window_process" 2>/dev/null || true
    window_process=
}

press()
{
    xdotool key --delay 20 "$@"
}

picture()
{
    local file=$1 part=${2:-100%x100%+0+0} before=none now='' number
    # Two equal pictures in a row show that the window has drawn itself.
    while [ "$before" != "$now" ]; do
        before=$now
        number=$(drive number)
        # Without the time of the picture, which would make another file each time.
        import -window "$number" -strip -define png:exclude-chunks=date,time "$file"
        now=$(convert "$file" -crop "$part" rgba:- | sha256sum)
    done
}
