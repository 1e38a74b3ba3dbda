# Shared helpers for driving the recorder on an X server of its own (source this file).
#   xvfb_start             Xvfb on the first free display from :90 on; sets XVFB_DISPLAY, XVFB_PID
#                          and XVFB_FBDIR (the screen is kept in $XVFB_FBDIR/Xvfb_screen0)
#   xvfb_stop              ends that server and removes its files
#   x_windows PID          the program's mapped windows, bottom of the stack first
#   x_wait_windows PID N   waits (up to 30 s) until the program shows N windows
#   x_press PID KEY        gives the program's topmost window the keyboard and presses KEY
#   x_grab FILE            the recorder's 256 x 64 screen (top left of the display) as a PNG

XVFB_PID=""
XVFB_DISPLAY=""
XVFB_FBDIR=""

xvfb_start() {
    XVFB_FBDIR="$(mktemp -d)"
    local n tries
    for n in $(seq 90 189); do
        if [ -e "/tmp/.X11-unix/X$n" ] || [ -e "/tmp/.X$n-lock" ]; then
            continue
        fi
        # -displayfd: the server writes its number once it listens
        Xvfb ":$n" -displayfd 3 -screen 0 640x480x24 -nolisten tcp -fbdir "$XVFB_FBDIR" \
            3>"$XVFB_FBDIR/display" 2>/dev/null &
        XVFB_PID=$!
        for tries in $(seq 300); do
            if [ -s "$XVFB_FBDIR/display" ] || ! kill -0 "$XVFB_PID" 2>/dev/null; then
                break
            fi
            sleep 0.1
        done
        if [ -s "$XVFB_FBDIR/display" ] && xdpyinfo -display ":$n" >/dev/null 2>&1; then
            XVFB_DISPLAY=":$n"
            return 0
        fi
        # another server took this display first
        kill "$XVFB_PID" 2>/dev/null || true
        wait "$XVFB_PID" 2>/dev/null || true
        XVFB_PID=""
    done
    echo "no Xvfb could be started" >&2
    return 1
}

xvfb_stop() {
    if [ -n "$XVFB_PID" ]; then
        kill "$XVFB_PID" 2>/dev/null || true
        wait "$XVFB_PID" 2>/dev/null || true
        XVFB_PID=""
    fi
    if [ -n "$XVFB_FBDIR" ]; then
        rm -rf "$XVFB_FBDIR"
        XVFB_FBDIR=""
    fi
}

x_windows() {
    DISPLAY="$XVFB_DISPLAY" xdotool search --onlyvisible --pid "$1" 2>/dev/null || true
}

x_wait_windows() {
    local tries
    for tries in $(seq 300); do
        if [ "$(x_windows "$1" | wc -l)" -eq "$2" ]; then
            return 0
        fi
        sleep 0.1
    done
    echo "the recorder did not show $2 window(s)" >&2
    return 1
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
        DISPLAY="$XVFB_DISPLAY" xdotool key "$2"
}

x_grab() {
    xwdtopnm "$XVFB_FBDIR/Xvfb_screen0" 2>/dev/null | pamcut 0 0 256 64 | pnmtopng >"$1"
}
