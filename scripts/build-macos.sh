#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds Velkor.app with Homebrew's Qt (brew install qtbase qttools), copies
# the Qt frameworks into it and signs it, then prints the bundle's path on
# the last line.
#
#   scripts/build-macos.sh            # Release build in build-macos/
#   VELKOR_SIGN_IDENTITY="Velkor Dev" scripts/build-macos.sh
#   VELKOR_MAC_WERROR=ON scripts/build-macos.sh    # warnings in the backend fail
#
# macOS ties the Accessibility grant to the app's code signature. An ad hoc
# signature (the default, "-") names this very build, so after a rebuild the
# grant may have to be given again; signing every build with the same
# certificate from your keychain (VELKOR_SIGN_IDENTITY) keeps the grant.
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=${VELKOR_BUILD_DIR:-build-macos}
identity=${VELKOR_SIGN_IDENTITY:--}
qt_prefix=$(brew --prefix qtbase)

# The oldest macOS the bundle runs on comes from CMakeLists.txt
# (CMAKE_OSX_DEPLOYMENT_TARGET), which also writes it into Info.plist.
cmake -S . -B "$build_dir" \
    -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$qt_prefix" \
    -DVELKOR_MAC_WERROR="${VELKOR_MAC_WERROR:-OFF}" \
    -DVELKOR_BUILD_BENCH=OFF
cmake --build "$build_dir" -j"$(sysctl -n hw.ncpu)"

app=$(find "$build_dir" -maxdepth 4 -type d -name Velkor.app | head -n 1)
if [ -z "$app" ]; then
    echo "velkor: no Velkor.app was built (is velkor_make_mac_bundle() called for the executable?)" >&2
    exit 1
fi

# macdeployqt comes with Qt's tools, a formula of its own.
deployqt="$(brew --prefix qttools)/bin/macdeployqt"
[ -x "$deployqt" ] || deployqt=$(command -v macdeployqt) || {
    echo "velkor: macdeployqt not found (brew install qttools)" >&2
    exit 1
}
"$deployqt" "$app"
codesign --force --deep --sign "$identity" "$app"
codesign --verify --deep --strict "$app"
echo "$app"
