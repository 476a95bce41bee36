#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds Velkor's Debian package with CPack: a build configured for /usr with
# Debian's own compiler flags (hardening included), its library dependencies
# worked out by dpkg-shlibdeps. Installs what is missing first; safe to run
# again. The last line printed is the path of the .deb:
#
#   sudo apt install "$(scripts/package.sh | tail -n 1)"
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh

build=build-package
jobs=$(nproc 2>/dev/null || echo 2)

# CMake reads the flags from the environment when it first configures the
# build; it has no use for CPPFLAGS, so the preprocessor's go with the
# compiler's. "None": no build type adds flags of its own.
eval "$(DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --export=sh)"
export CXXFLAGS="$CPPFLAGS $CXXFLAGS"
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=None -DCMAKE_INSTALL_PREFIX=/usr \
    -DVELKOR_BUILD_TESTS=OFF -DVELKOR_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j"$jobs" --target velkor

out=$build/package
rm -rf "$out"
mkdir -p "$out"
(cd "$build" && cpack -G DEB -B "$PWD/package" >/dev/null)
deb=$(find "$out" -maxdepth 1 -name 'velkor_*.deb' -print -quit)
if [ -z "$deb" ]; then
    echo "velkor: cpack made no package in $out" >&2
    exit 1
fi
realpath "$deb"
