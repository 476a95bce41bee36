#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds Velkor.app with Homebrew's Qt, copies the Qt frameworks into it and
# signs it, then prints the bundle's path.
#
#   scripts/build-macos.sh            # Release build in build-macos/
#   VELKOR_SIGN_IDENTITY="Velkor Dev" scripts/build-macos.sh
#
# macOS ties the Accessibility grant to the app's code signature. An ad hoc
# signature (the default, "-") names this very build, so after a rebuild the
# grant may have to be given again; signing every build with the same
# certificate from your keychain (VELKOR_SIGN_IDENTITY) keeps the grant.
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=${VELKOR_BUILD_DIR:-build-macos}
identity=${VELKOR_SIGN_IDENTITY:--}
qt_prefix=$(brew --prefix qt)

cmake -S . -B "$build_dir" \
    -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$qt_prefix" \
    -DCMAKE_OSX_DEPLOYMENT_TARGET=13.0 \
    -DVELKOR_BUILD_BENCH=OFF
cmake --build "$build_dir" -j"$(sysctl -n hw.ncpu)"

app=$(find "$build_dir" -maxdepth 4 -type d -name Velkor.app | head -n 1)
if [ -z "$app" ]; then
    echo "velkor: no Velkor.app was built (is velkor_make_mac_bundle() called for the executable?)" >&2
    exit 1
fi

"$qt_prefix/bin/macdeployqt" "$app"
codesign --force --deep --sign "$identity" "$app"
codesign --verify --deep --strict "$app"
echo "$app"
