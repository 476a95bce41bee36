#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds, and runs every test suite: the unit
# suite, the unit suite again under AddressSanitizer and
# UndefinedBehaviorSanitizer, and the end-to-end suite against Xvfb and
# openbox. Exits non-zero when anything fails.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh

jobs=$(nproc 2>/dev/null || echo 2)

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$jobs"

cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DVELKOR_SANITIZE=ON \
    -DVELKOR_BUILD_APP=OFF -DVELKOR_BUILD_BENCH=OFF >/dev/null
cmake --build build-asan -j"$jobs"

status=0
echo "== unit tests =="
ctest --test-dir build -L unit --output-on-failure -j"$jobs" || status=1

echo "== unit tests under AddressSanitizer and UndefinedBehaviorSanitizer =="
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    ctest --test-dir build-asan -L unit --output-on-failure -j"$jobs" || status=1

if ctest --test-dir build -L e2e -N 2>/dev/null | grep -q 'Total Tests: [1-9]'; then
    echo "== end-to-end tests =="
    ctest --test-dir build -L e2e --output-on-failure || status=1
fi

exit $status
