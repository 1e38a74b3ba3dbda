#!/usr/bin/env bash
# scripts/run scan: sets up, builds, makes the device root in build/deviceroot and starts the
# scan-and-read program (apps/bin/scanread) in it on a session bus of its own.
#   With a display: the 256 x 64 screen, three times enlarged, in a window. Scan a line from
#   another terminal with
#       RECORDER_ROOT=build/deviceroot build/default/devsim/bin/scanline "some text"
#   Return = read the selection (or the word at the cursor) aloud, Left/Right = previous/next
#   word, Up/Down = line, Escape = stop reading, then leave. The shell's messages are printed here.
#   Without one: a scripted session under Xvfb that scans an English, a German and a Chinese line
#   and reads each aloud, saving screenshots while a word is highlighted; it prints the recognised
#   text and where the spoken audio went.
set -euo pipefail

repo="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
build="$repo/build/default"
root="$repo/build/deviceroot"
screens="$repo/build/screens"
log="$repo/build/scanread.log"
config="$root/apps/config/config.ini"

# the reading language: a position of the language table (0 Chinese, 1 English); the pen's other
# reading settings, which mkroot writes, stay as they are
set_reading_language() {
    sed -i "/^\[InfoListen\]/,/^\[/ s/^Lan=.*/Lan=$1/" "$config"
}

if [ "${1:-}" != "--on-session-bus" ]; then
    "$repo/scripts/setup"
    (cd "$repo" && cmake --preset default >/dev/null)
    (cd "$repo" && cmake --build --preset default -j "$(nproc)")
    "$repo/devsim/mkroot" "$root" "$build"
    exec dbus-run-session -- "$0" --on-session-bus
fi

# From here on: inside the session bus.
# shellcheck source=xsession.sh
source "$repo/scripts/lib/xsession.sh"

export RECORDER_ROOT="$root"
export PATH="$build/devsim/bin:$PATH"
# Tesseract's OpenMP threads spin while they wait: one is quicker on a shared machine
export OMP_THREAD_LIMIT=1
qcop="$build/devsim/bin/qcop"
scanread="$root/apps/bin/scanread"
scanline="$build/devsim/bin/scanline"
shell_log="$(mktemp)"

QCOP_PID=""
SCAN_PID=""
cleanup() {
    stop_pids "$SCAN_PID" "$QCOP_PID"
    rm -f "$shell_log"
    listen_stop
    xvfb_stop
}
trap cleanup EXIT
trap 'exit 130' INT TERM

run_with_display() {
    listen_to_shell "$qcop"
    echo "scan: scan a line from another terminal with"
    echo "    RECORDER_ROOT=$root $scanline \"some text\""
    echo "scan: Return = read aloud, Left/Right = word, Up/Down = line," \
        "Escape = stop reading, then leave"
    echo "scan: device root $root, program log $log"
    QT_QPA_PLATFORM=xcb QT_SCALE_FACTOR=3 "$scanread" {LISTEN_FD}>&- 2>&1 |
        tee "$log" | grep --line-buffered '^scanread:' || true
}

# more than $3 lines of file $1 hold the text $2
more_than() {
    [ "$(grep -c -a -F -- "$2" "$1" 2>/dev/null)" -gt "$3" ]
}

# Waits (up to a minute) until more than $3 lines of $1 hold $2.
wait_for_more() {
    if ! wait_until 60 more_than "$@"; then
        echo "scan: \"$2\" did not come (see $log)" >&2
        return 1
    fi
}

start_scanread() {
    local started
    started="$(grep -c -a -F "scanread: scanner ready" "$log" || true)"
    "$scanread" >>"$log" 2>&1 &
    SCAN_PID=$!
    x_wait_windows "$SCAN_PID" 1
    wait_for_more "$log" "scanread: scanner ready" "$started"
}

leave_scanread() {
    x_press "$SCAN_PID" Escape
    wait_gone "$X_STEP_SECONDS" "$SCAN_PID" || echo "scan: it did not leave on Escape" >&2
    SCAN_PID=""
}

# scans one line, reads it aloud and keeps a screenshot of a highlighted word; $1 a short name
scan_and_read() {
    local name="$1" text="$2" views soundno words
    views="$(grep -c -a -F "scanread: view" "$log" || true)"
    echo "scan: scanning \"$text\""
    "$scanline" "$text" >/dev/null
    wait_for_more "$log" "scanread: view" "$views"
    grep -a '^scanread: recognised' "$log" | tail -n 1
    soundno="$(grep -c "soundno" "$shell_log" || true)"
    words="$(grep -c -a "dequeue pos:" "$log" || true)"
    echo "scan: OK (read aloud)"
    x_press "$SCAN_PID" Return
    # the third word is highlighted
    wait_for_more "$log" "dequeue pos:" "$((words + 2))"
    x_grab "$screens/run_scan_${name}.png"
    wait_for_more "$shell_log" "soundno" "$soundno"
    cp "$root/apps/data/tts/speech.wav" "$repo/build/scan_speech_${name}.wav"
    echo "scan: read aloud; the speech is in build/scan_speech_${name}.wav"
}

run_headless() {
    mkdir -p "$screens"
    : >"$log"
    xvfb_start
    export DISPLAY="$XVFB_DISPLAY" QT_QPA_PLATFORM=xcb DEVSIM_SPEECH=file
    echo "scan: no display; a scripted session on Xvfb $DISPLAY"
    "$qcop" listen mainprocess >"$shell_log" 2>/dev/null &
    QCOP_PID=$!

    set_reading_language 1
    start_scanread
    scan_and_read english "Reading pens help people read printed text."
    scan_and_read german "Der Stift liest jede Zeile laut vor."
    x_grab "$screens/run_scan_latin.png"
    leave_scanread
    # Chinese is recognised and spoken with the Chinese engines
    set_reading_language 0
    start_scanread
    scan_and_read chinese "我们一起读书。"
    leave_scanread
    set_reading_language 1

    echo
    echo "shell:    $(awk '{ print $3 }' "$shell_log" | sort | uniq -c | tr -s ' \n' ' ')"
    echo "screens:  $screens/run_scan_*.png"
    echo "speech:   $repo/build/scan_speech_*.wav (from $root/apps/data/tts/speech.wav)"
    echo "log:      $log"
}

if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
    run_with_display
else
    run_headless
fi
