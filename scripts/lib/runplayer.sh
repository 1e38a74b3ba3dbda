#!/usr/bin/env bash
# scripts/run player [FILE]: sets up, builds, makes the device root in build/deviceroot and starts
# the music player (apps/bin/musicplayer) in it on a session bus of its own.
#   FILE given: it is copied to the card's e_Music and is the whole music list.
#   Otherwise the card's e_Music; when it holds no music, a few generated songs of different
#   lengths (one of over an hour) are put there first.
#   With a display: the 256 x 64 screen, three times enlarged, in a window (Return = pause/play,
#   F5/F6 held = quick seek, F7/F8 = previous/next, Up/Down = volume, F12 = options, Escape
#   stops, Escape again leaves); the shell's messages are printed here.
#   Without one: a short scripted session under Xvfb (play, pause, resume, quick seek forward,
#   next, stop, play again, stop, quit) that says what it did and saves screenshots.
set -euo pipefail

repo="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
build="$repo/build/default"
root="$repo/build/deviceroot"
screens="$repo/build/screens"
log="$repo/build/musicplayer.log"
music="$root/mnt/mmc/e_Music"

# Songs of 20 s, 75 s and just over an hour (the list plays them in this order); the long one as
# 8 kHz mono at 8 kbit/s, so that it takes a few seconds and a few megabytes to make.
make_songs() {
    echo "player: no music on the card; making three songs in $music"
    sox -n -r 22050 -c 1 -C 64 "$music/song_3_twenty_seconds.mp3" synth 20 sine 440 2>/dev/null
    sox -n -r 22050 -c 1 -C 64 "$music/song_2_seventy_five_seconds.mp3" synth 75 sine 330 \
        2>/dev/null
    sox -n -r 8000 -c 1 -C 8 "$music/song_1_over_an_hour.mp3" synth 1:01:40 sine 220 2>/dev/null
}

# The list as the start-up scan writes it: pen paths of the MP3 files, in descending byte order.
write_music_list() {
    local file
    (
        cd "$root"
        for file in mnt/mmc/*.mp3* mnt/mmc/e_Music/*.mp3*; do
            [ -f "$file" ] && printf '/%s\n' "$file"
        done
    ) | LC_ALL=C sort -r >"$root/apps/config/musiclist.txt"
}

if [ "${1:-}" != "--on-session-bus" ]; then
    "$repo/scripts/setup"
    (cd "$repo" && cmake --preset default >/dev/null)
    (cd "$repo" && cmake --build --preset default -j "$(nproc)")
    "$repo/devsim/mkroot" "$root" "$build"
    if [ $# -gt 0 ]; then
        cp "$1" "$music/"
        printf '/mnt/mmc/e_Music/%s\n' "$(basename "$1")" >"$root/apps/config/musiclist.txt"
    else
        if ! ls "$music"/*.mp3* >/dev/null 2>&1; then
            make_songs
        fi
        write_music_list
    fi
    exec dbus-run-session -- "$0" --on-session-bus
fi

# From here on: inside the session bus.
# shellcheck source=xsession.sh
source "$repo/scripts/lib/xsession.sh"

export RECORDER_ROOT="$root"
export PATH="$build/devsim/bin:$PATH"
qcop="$build/devsim/bin/qcop"
player="$root/apps/bin/musicplayer"
shell_log="$(mktemp)"

QCOP_PID=""
PLAYER_PID=""
cleanup() {
    # the player leaves on SIGTERM and takes mplayer with it
    stop_pids "$PLAYER_PID" "$QCOP_PID"
    rm -f "$shell_log"
    listen_stop
    xvfb_stop
}
trap cleanup EXIT
trap 'exit 130' INT TERM

run_with_display() {
    listen_to_shell "$qcop"
    echo "player: Return = pause/play, F5/F6 held = quick seek, F7/F8 = previous/next," \
        "Up/Down = volume, F12 = options, Escape stops, Escape again leaves"
    echo "player: music list $root/apps/config/musiclist.txt, program log $log"
    QT_QPA_PLATFORM=xcb QT_SCALE_FACTOR=3 "$player" >"$log" 2>&1 {LISTEN_FD}>&-
}

# The file holds the text beyond its first $3 lines (those already seen).
has_line() {
    tail -n "+$(("${3:-0}" + 1))" "$1" | grep -qF -- "$2"
}

line_or_player_gone() {
    has_line "$@" || { [ -n "$PLAYER_PID" ] && pid_gone "$PLAYER_PID"; }
}

# Waits (up to 30 s) until the file holds the text; $3: lines already seen that do not count.
wait_for_line() {
    if wait_until 30 line_or_player_gone "$@" && has_line "$@"; then
        return 0
    fi
    echo "player: \"$2\" did not come (see $log)" >&2
    return 1
}

lines_of() {
    wc -l <"$1"
}

# x of the progress bar's right end on the screen now (its middle row, y 22), -1 for none
bar_end() {
    xwdtopnm "$XVFB_FBDIR/Xvfb_screen0" 2>/dev/null | pamcut 0 22 256 1 | ppmtopgm |
        pnmtoplainpnm | tail -n +4 | tr -s ' \n' '\n' | grep -v '^$' |
        awk 'BEGIN { last = -1 } $1 > 128 { last = NR - 1 } END { print last }'
}

# whether the quick-seek pointer is on the screen (its tip reaches row 24, below the bar)
pointer_shown() {
    xwdtopnm "$XVFB_FBDIR/Xvfb_screen0" 2>/dev/null | pamcut 0 24 256 1 | ppmtopgm |
        pnmtoplainpnm | tail -n +4 | tr -s ' \n' '\n' | grep -qE '^(1[3-9][0-9]|2[0-9][0-9])$'
}

bar_reached() {
    [ "$(bar_end)" -ge "$1" ] && { [ "${2:-}" != plain ] || ! pointer_shown; }
}

# Waits (up to 30 s) until the bar ends at least at x $1; with "plain", also without the pointer.
wait_for_bar() {
    if wait_until 30 bar_reached "$@"; then
        return 0
    fi
    echo "player: the bar did not reach x $1 (it ends at $(bar_end))" >&2
    return 1
}

run_headless() {
    mkdir -p "$screens"
    xvfb_start
    export DISPLAY="$XVFB_DISPLAY" QT_QPA_PLATFORM=xcb
    echo "player: no display; a scripted session on Xvfb $DISPLAY"
    echo "player: music list: $(tr '\n' ' ' <"$root/apps/config/musiclist.txt")"
    "$qcop" listen mainprocess >"$shell_log" 2>/dev/null &
    QCOP_PID=$!
    "$player" >"$log" 2>&1 &
    PLAYER_PID=$!
    x_wait_windows "$PLAYER_PID" 1
    wait_for_line "$shell_log" "disableAutoSleep"
    echo "player: $(grep -a -o 'playing 0: .*' "$log" | head -n 1 | sed 's/\x1b\[0m//')"
    wait_for_bar 6
    x_grab "$screens/run_player_1_playing.png"

    local seen
    seen="$(lines_of "$shell_log")"
    echo "player: OK (pause)"
    x_press "$PLAYER_PID" Return
    wait_for_line "$shell_log" "enableAutoSleep" "$seen"
    x_grab "$screens/run_player_2_paused.png"
    echo "player: paused, the shell may let the pen sleep again"

    seen="$(lines_of "$shell_log")"
    echo "player: OK (play on)"
    x_press "$PLAYER_PID" Return
    wait_for_line "$shell_log" "disableAutoSleep" "$seen"
    echo "player: playing again at bar x $(bar_end)"

    echo "player: F6 held (quick seek forward) until the pointer is past the middle"
    DISPLAY="$XVFB_DISPLAY" xdotool keydown F6
    wait_for_bar 140
    x_grab "$screens/run_player_3_quick-seek.png"
    DISPLAY="$XVFB_DISPLAY" xdotool keyup F6
    # the position shows again once the player has gone on from the new place
    wait_for_bar 120 plain
    echo "player: F6 released; playing on from bar x $(bar_end) of 256"

    seen="$(lines_of "$log")"
    echo "player: F8 (next song)"
    x_press "$PLAYER_PID" F8
    wait_for_line "$log" "playing 1: " "$seen"
    echo "player: $(grep -a -o 'playing 1: .*' "$log" | tail -n 1 | sed 's/\x1b\[0m//')"
    wait_for_bar 2
    x_grab "$screens/run_player_4_next.png"

    seen="$(lines_of "$shell_log")"
    echo "player: Escape (stop)"
    x_press "$PLAYER_PID" Escape
    wait_for_line "$shell_log" "enableAutoSleep" "$seen"
    x_grab "$screens/run_player_5_stopped.png"

    seen="$(lines_of "$log")"
    echo "player: OK (the stopped song plays again)"
    x_press "$PLAYER_PID" Return
    wait_for_line "$log" "playing 1: " "$seen"
    seen="$(lines_of "$shell_log")"
    echo "player: Escape (stop)"
    x_press "$PLAYER_PID" Escape
    wait_for_line "$shell_log" "enableAutoSleep" "$seen"
    echo "player: Escape (leave)"
    x_press "$PLAYER_PID" Escape
    wait_gone "$X_STEP_SECONDS" "$PLAYER_PID" || echo "player: it did not leave on Escape" >&2
    PLAYER_PID=""

    echo
    echo "shell:    $(awk '{ print $3 }' "$shell_log" | tr '\n' ' ')"
    echo "screens:  $screens/run_player_*.png"
    echo "log:      $log"
}

if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
    run_with_display
else
    run_headless
fi
