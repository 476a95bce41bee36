#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds, and runs Velkor in this X11 session.
# With no X11 display, starts a demo desktop (Xvfb + openbox + a few X
# clients) instead, plays a scripted tour of the main gestures, prints what
# happened and writes a screenshot of each step into a folder it names.
# Safe to run again: the build is incremental and a running Velkor is left
# alone.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh

build=build-run
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELKOR_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j"$jobs" --target velkor velkor-demo-tour

have_x11_display() {
    [ -n "${DISPLAY:-}" ] && command -v xdpyinfo >/dev/null 2>&1 && xdpyinfo >/dev/null 2>&1
}

# A Velkor of this user already on this display, if any.
running_here() {
    local pid
    for pid in $(pgrep -u "$(id -u)" -x velkor 2>/dev/null); do
        if tr '\0' '\n' <"/proc/$pid/environ" 2>/dev/null | grep -qx "DISPLAY=$DISPLAY"; then
            echo "$pid"
            return 0
        fi
    done
    return 1
}

if have_x11_display; then
    if pid=$(running_here); then
        echo "velkor: already running on display $DISPLAY (pid $pid)."
        exit 0
    fi
    echo "velkor: running on display $DISPLAY; hold Right Super and press a letter. Ctrl+C quits."
    exec "$build/src/app/velkor"
fi

if [ -n "${WAYLAND_DISPLAY:-}" ]; then
    echo "velkor: this Wayland session has no X11 display, and Velkor needs X11; showing the demo instead."
else
    echo "velkor: no X11 display; showing the demo desktop instead."
fi
folder="${VELKOR_DEMO_DIR:-$PWD/velkor-demo-$(date +%Y%m%d-%H%M%S)}"
echo "velkor: screenshots go to $folder"
exec env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=offscreen \
    "$build/tests/e2e/velkor-demo-tour" "$folder"
