#!/usr/bin/env bash
# Builds Kelvane and runs it. Without a display, it starts a virtual one with two monitors (and a
# compositor for the transparent windows) and says how to look at it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh build run
scripts/configure.sh
cmake --build build --target kelvane -j "$(nproc)"

if [[ -z "${DISPLAY:-}" ]]; then
    fifo=$(mktemp -u)
    mkfifo "$fifo"
    Xvfb -displayfd 4 -screen 0 2792x982x24 -noreset -nolisten tcp 4>"$fifo" >/dev/null 2>&1 &
    xvfb_pid=$!
    read -r number <"$fifo"
    rm -f "$fifo"
    export DISPLAY=":$number"
    trap 'kill $xvfb_pid 2>/dev/null || true' EXIT
    xrandr --setmonitor M1 1512/400x982/260+0+0 screen >/dev/null
    xrandr --setmonitor M2 1280/340x800/212+1512+0 none >/dev/null
    xcompmgr -n >/dev/null 2>&1 &
    echo "Kelvane is running on the virtual display $DISPLAY (two monitors: 1512x982 and 1280x800)."
    echo "  Look at it:   DISPLAY=$DISPLAY import -window root shot.png"
    echo "  Hover it:     DISPLAY=$DISPLAY xdotool mousemove 756 10"
    echo "Press Ctrl+C to quit."
fi
build/src/app/kelvane
