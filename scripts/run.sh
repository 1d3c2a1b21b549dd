#!/usr/bin/env bash
# Builds Kelvane and runs it. Without a display, it starts a virtual one with two monitors (and a
# compositor for the transparent windows) and says how to look at it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh build run
scripts/configure.sh
cmake --build build --target kelvane kelvanectl -j "$(nproc)"
cleanup=()
trap 'for pid in "${cleanup[@]}"; do kill "$pid" 2>/dev/null || true; done' EXIT

# kelvanectl and a second launch find the agent on the session bus; a bare machine gets one.
if [[ -z "${DBUS_SESSION_BUS_ADDRESS:-}" && ! -S "/run/user/$(id -u)/bus" ]]; then
    bus=$(mktemp)
    dbus-daemon --session --fork --nopidfile --print-address=1 --print-pid=1 >"$bus"
    export DBUS_SESSION_BUS_ADDRESS=$(sed -n 1p "$bus")
    cleanup+=("$(sed -n 2p "$bus")")
    rm -f "$bus"
fi

if [[ -z "${DISPLAY:-}" ]]; then
    fifo=$(mktemp -u)
    mkfifo "$fifo"
    Xvfb -displayfd 4 -screen 0 2792x982x24 -noreset -nolisten tcp 4>"$fifo" >/dev/null 2>&1 &
    cleanup+=("$!")
    read -r number <"$fifo"
    rm -f "$fifo"
    export DISPLAY=":$number"
    xrandr --setmonitor M1 1512/400x982/260+0+0 screen >/dev/null
    xrandr --setmonitor M2 1280/340x800/212+1512+0 none >/dev/null
    xcompmgr -n >/dev/null 2>&1 &
    echo "Kelvane is running on the virtual display $DISPLAY (two monitors: 1512x982 and 1280x800)."
    echo "  Look at it:   DISPLAY=$DISPLAY import -window root shot.png"
    echo "  Hover it:     DISPLAY=$DISPLAY xdotool mousemove 756 10"
fi
echo "Script it:      DBUS_SESSION_BUS_ADDRESS='$DBUS_SESSION_BUS_ADDRESS' build/src/ctl/kelvanectl state"
echo "Press Ctrl+C to quit."
build/src/app/kelvane
