# shellcheck shell=bash
# Shared helpers for driving the recorder on an X server of its own (source this file).
#   xvfb_start             Xvfb on the first free display from :90 on; sets XVFB_DISPLAY, XVFB_PID
#                          and XVFB_FBDIR (the screen is kept in $XVFB_FBDIR/Xvfb_screen0)
#   xvfb_stop              ends that server and removes its files
#   wait_until SECONDS CMD...  runs CMD every 0.1 s until it succeeds; false after SECONDS
#   x_windows PID          the program's mapped windows, bottom of the stack first
#   x_wait_windows PID N [NOT_TOP]  waits (up to 30 s) until the program shows N windows, the
#                          topmost not being NOT_TOP
#   x_press PID KEY        gives the program's topmost window the keyboard and presses KEY
#   x_grab FILE            the recorder's 256 x 64 screen (top left of the display) as a PNG
#   x_lit X Y, x_dark X Y  true when the screen's pixel at X, Y is lit, or not
#   x_wait_pixel lit|dark X Y  waits (up to 30 s) until that pixel is lit, or dark
#   x_wait_clock SECONDS   waits until the recorder's clock has gone on by SECONDS
#   listen_to_shell QCOP   prints each message to the shell's channel as a line "shell: ...",
#                          from when it returns until listen_stop; programs started meanwhile
#                          are given {LISTEN_FD}>&- so that they do not hold the listener's pipe
#   listen_stop            ends the listener once what it heard is printed
#   stop_pids PID...       ends those processes and reaps them (empty ones skipped): TERM, and
#                          KILL for any still there after STOP_GRACE_SECONDS
#   wait_gone SECONDS PID  waits until the process has ended by itself and reaps it; after
#                          SECONDS it is stopped as by stop_pids and the result is false

XVFB_PID=""
XVFB_DISPLAY=""
XVFB_FBDIR=""
XVFB_LOCK=""
LISTEN_QCOP_PID=""
LISTEN_SED_PID=""
LISTEN_FD=""

# A loaded machine may take a while to start a Qt program or to show a window.
X_STEP_SECONDS=30
# What a process gets after TERM to end before it is killed.
STOP_GRACE_SECONDS=5

xvfb_start() {
    XVFB_FBDIR="$(mktemp -d)"
    local n
    for n in $(seq 90 189); do
        if [ -e "/tmp/.X11-unix/X$n" ]; then
            continue
        fi
        # Xvfb takes no lock file when it is given -displayfd: claim the number the way X
        # servers do, with a lock file made only when there is none, holding a live pid
        if ! (set -o noclobber && printf '%10d\n' "$$" >"/tmp/.X$n-lock") 2>/dev/null; then
            continue
        fi
        XVFB_LOCK="/tmp/.X$n-lock"
        # -displayfd: the server writes its number once it listens. -noreset: otherwise the
        # server resets when its last client leaves (xdpyinfo below, xdotool looking for windows
        # before the recorder has any) and drops a client connecting meanwhile
        # -ardelay: a key held down by a script (the player's quick seek) stays one press; the
        # server's own repeat would come as release and press pairs that a busy program can take
        # for a real release
        Xvfb ":$n" -displayfd 3 -noreset -ardelay 600000 -screen 0 640x480x24 -nolisten tcp \
            -fbdir "$XVFB_FBDIR" 3>"$XVFB_FBDIR/display" >/dev/null 2>&1 &
        XVFB_PID=$!
        wait_until "$X_STEP_SECONDS" xvfb_announced || true
        if [ -s "$XVFB_FBDIR/display" ] && xdpyinfo -display ":$n" >/dev/null 2>&1; then
            XVFB_DISPLAY=":$n"
            return 0
        fi
        # a server without a lock file holds this display already
        xvfb_stop_server
    done
    echo "no Xvfb could be started" >&2
    return 1
}

# the number is written, or the server has ended
xvfb_announced() {
    [ -s "$XVFB_FBDIR/display" ] || pid_gone "$XVFB_PID"
}

xvfb_stop_server() {
    stop_pids "$XVFB_PID"
    XVFB_PID=""
    if [ -n "$XVFB_LOCK" ]; then
        rm -f "$XVFB_LOCK"
        XVFB_LOCK=""
    fi
}

xvfb_stop() {
    xvfb_stop_server
    if [ -n "$XVFB_FBDIR" ]; then
        rm -rf "$XVFB_FBDIR"
        XVFB_FBDIR=""
    fi
}

wait_until() {
    local deadline=$((SECONDS + $1))
    shift
    until "$@"; do
        if [ "$SECONDS" -ge "$deadline" ]; then
            return 1
        fi
        sleep 0.1
    done
}

# true once the process is gone or has ended and waits only to be reaped (a zombie)
pid_gone() {
    local state
    state="$(sed -n 's/^.*) \(.\).*/\1/p' "/proc/$1/stat" 2>/dev/null || true)"
    [ -z "$state" ] || [ "$state" = Z ]
}

# Ends each process given by its pid and reaps it; empty arguments are skipped. All get TERM at
# once; one still there after the grace gets KILL, which it cannot refuse.
stop_pids() {
    local pid
    for pid in "$@"; do
        [ -n "$pid" ] && kill "$pid" 2>/dev/null || true
    done
    for pid in "$@"; do
        [ -n "$pid" ] || continue
        if ! wait_until "$STOP_GRACE_SECONDS" pid_gone "$pid"; then
            echo "process $pid did not end on TERM: killed" >&2
            kill -KILL "$pid" 2>/dev/null || true
        fi
        wait "$pid" 2>/dev/null || true
    done
}

wait_gone() {
    if wait_until "$1" pid_gone "$2"; then
        wait "$2" 2>/dev/null || true
        return 0
    fi
    echo "process $2 did not end within $1 s" >&2
    stop_pids "$2"
    return 1
}

x_windows() {
    DISPLAY="$XVFB_DISPLAY" xdotool search --onlyvisible --pid "$1" 2>/dev/null || true
}

x_shows_windows() {
    local windows
    windows="$(x_windows "$1")"
    [ "$(grep -c . <<<"$windows")" -eq "$2" ] && [ "$(tail -n 1 <<<"$windows")" != "${3:-}" ]
}

x_wait_windows() {
    if ! wait_until "$X_STEP_SECONDS" x_shows_windows "$@"; then
        echo "the recorder did not show $2 window(s)" >&2
        return 1
    fi
}

x_press() {
    local top
    top="$(x_windows "$1" | tail -n 1)"
    if [ -z "$top" ]; then
        echo "the recorder shows no window" >&2
        return 1
    fi
    # without a window manager nobody hands the keyboard to a new window: do it as one would
    DISPLAY="$XVFB_DISPLAY" timeout 20 xdotool windowfocus --sync "$top" &&
        DISPLAY="$XVFB_DISPLAY" timeout 20 xdotool key "$2"
}

# the screen as a picture, cut to W x H at X, Y
x_cut() {
    xwdtopnm "$XVFB_FBDIR/Xvfb_screen0" 2>/dev/null | pamcut "$@"
}

x_grab() {
    x_cut 0 0 256 64 | pnmtopng >"$1"
}

x_lit() {
    x_cut "$1" "$2" 1 1 | pnmtoplainpnm | tail -n 1 | awk '{ exit !($1 > 128) }'
}

x_dark() {
    ! x_lit "$@"
}

x_wait_pixel() {
    if ! wait_until "$X_STEP_SECONDS" "x_$1" "$2" "$3"; then
        echo "the screen's pixel at $2, $3 did not turn $1" >&2
        return 1
    fi
}

# The clock is counted by its pictures: each second shows a new one. A picture counts once it
# is read twice in a row, so that one caught half drawn is not taken for a second.
x_clock_went_on() {
    local now
    now="$(x_cut 186 22 70 24 | md5sum)"
    if [ "$now" = "$X_CLOCK_LAST" ] && ! grep -qxF "$now" <<<"$X_CLOCK_SEEN"; then
        X_CLOCK_SEEN+="$now"$'\n'
    fi
    X_CLOCK_LAST="$now"
    # the first picture is the time the wait began at
    [ "$(grep -c . <<<"$X_CLOCK_SEEN")" -gt "$1" ]
}

x_wait_clock() {
    X_CLOCK_SEEN=""
    X_CLOCK_LAST=""
    if ! wait_until $((X_STEP_SECONDS + 5 * $1)) x_clock_went_on "$1"; then
        echo "the recorder's clock did not go on by $1 s" >&2
        return 1
    fi
}

# qcop writes into sed through a pipe that only these two hold, so that sed ends once qcop has.
listen_to_shell() {
    local said failed=0
    said="$(mktemp)"
    exec {LISTEN_FD}> >(exec sed -u 's/^/shell: /')
    LISTEN_SED_PID=$!
    "$1" listen mainprocess 1>&"$LISTEN_FD" 2>"$said" &
    LISTEN_QCOP_PID=$!
    wait_until "$X_STEP_SECONDS" grep -q "qcop: listening" "$said" || failed=1
    rm -f "$said"
    if [ "$failed" -ne 0 ]; then
        echo "qcop does not listen" >&2
    fi
    return "$failed"
}

listen_stop() {
    stop_pids "$LISTEN_QCOP_PID"
    LISTEN_QCOP_PID=""
    if [ -n "$LISTEN_FD" ]; then
        exec {LISTEN_FD}>&-
        LISTEN_FD=""
    fi
    if [ -n "$LISTEN_SED_PID" ]; then
        # sed ends by itself once the pipe is closed and what it holds is printed
        wait_gone 5 "$LISTEN_SED_PID" || true
        LISTEN_SED_PID=""
    fi
}
