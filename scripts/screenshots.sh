#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Renders the overlay (three modes, light and dark), each settings pane and
# the onboarding window to PNG files in docs/screenshots, offscreen: no
# display is needed.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${BUILD_DIR:-build}
[ -f "$build/CMakeCache.txt" ] || cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --target velkor-screenshots -j"${JOBS:-2}" >/dev/null

QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8 "$build/tools/velkor-screenshots" docs/screenshots
ls docs/screenshots
