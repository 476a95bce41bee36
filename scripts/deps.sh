#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the Debian 12 packages Velkor needs to build, run and test, when
# any of them is missing. Safe to run again; uses sudo when not root.
set -euo pipefail

packages=(
    # build
    cmake g++ make pkg-config clang-format
    qt6-base-dev qt6-base-dev-tools qt6-qpa-plugins libgl-dev
    libx11-dev libxcb1-dev libxcb-xtest0-dev libxcb-res0-dev libxcb-ewmh-dev libxcb-icccm4-dev
    libxcb-keysyms1-dev libxcb-xkb-dev libxcb-xinput-dev libxcb-xfixes0-dev
    libxcb-damage0-dev # velkor-x11-bench sees the overlay's first frame through DAMAGE
    libxkbcommon-dev libxkbcommon-x11-dev libglib2.0-dev
    # run
    fonts-league-spartan dbus-x11 dbus-daemon
    # the demo desktop and the end-to-end suite
    xvfb xauth openbox xterm x11-apps x11-utils x11-xserver-utils x11-xkb-utils xdotool wmctrl trayer xcompmgr procps
    # the installed files' checks, the app icon's script, the Debian package
    desktop-file-utils appstream man-db file python3 dpkg-dev lintian
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$p")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

if ! command -v apt-get >/dev/null 2>&1; then
    echo "velkor: these packages are missing and this is not a Debian system: ${missing[*]}" >&2
    exit 1
fi
sudo=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null 2>&1; then
        echo "velkor: need root or sudo to install: ${missing[*]}" >&2
        exit 1
    fi
    sudo=(sudo)
fi
echo "velkor: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq "${missing[@]}" >/dev/null
