#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Checks a built Velkor.app on a Mac: Info.plist states the oldest macOS it
# runs on and no binary inside needs a newer one, the app icon is there,
# and the app starts. It is run for a few seconds, must still be running
# and have written its start-up line, then is quit with SIGTERM and must end
# cleanly. Without the Accessibility grant (CI) the start-up line is the one
# that opens the onboarding window.
#
#   scripts/check-macos-app.sh path/to/Velkor.app [seconds]
set -euo pipefail

app=${1:?usage: check-macos-app.sh path/to/Velkor.app [seconds]}
seconds=${2:-10}
fail() {
    echo "velkor: $*" >&2
    exit 1
}
# Alive, and not just a zombie waiting to be reaped.
running() {
    local state
    state=$(ps -o stat= -p "$1" 2>/dev/null) && [[ $state != Z* ]]
}

# -- the oldest macOS, stated and needed
minimum=$(plutil -extract LSMinimumSystemVersion raw "$app/Contents/Info.plist")
[[ $minimum =~ ^[0-9]+(\.[0-9]+)*$ ]] || fail "Info.plist states no macOS version: '$minimum'"
while IFS= read -r -d '' binary; do
    # LC_BUILD_VERSION's minos; files that are not Mach-O have none.
    for minos in $(otool -l "$binary" 2>/dev/null | awk '$1 == "minos" { print $2 }'); do
        newest=$(printf '%s\n' "$minimum" "$minos" | sort -V | tail -n 1)
        [ "$newest" = "$minimum" ] || fail "$binary needs macOS $minos, Info.plist says $minimum"
    done
done < <(find "$app/Contents" -type f \( -perm -u+x -o -name '*.dylib' \) -print0)
echo "velkor: Info.plist and every binary agree on macOS $minimum"

icon=$(plutil -extract CFBundleIconFile raw "$app/Contents/Info.plist")
[ -s "$app/Contents/Resources/$icon" ] || fail "the app icon $icon is missing"

# -- a short run
log=$(mktemp "${TMPDIR:-/tmp}/velkor-start.XXXXXX")
# Qt writes its log to the unified log, not stderr, when stderr is no terminal.
QT_FORCE_STDERR_LOGGING=1 "$app/Contents/MacOS/Velkor" >"$log" 2>&1 &
pid=$!
sleep "$seconds"
if ! running "$pid"; then
    status=0
    wait "$pid" || status=$?
    cat "$log"
    fail "Velkor.app ended within ${seconds}s (status $status)"
fi
started='Velkor is not allowed to use Accessibility|\[Velkor\] event tap installed'
if ! grep -Eq "$started" "$log"; then
    kill -KILL "$pid"
    cat "$log"
    fail "Velkor.app wrote no start-up line"
fi

kill -TERM "$pid"
for _ in $(seq 50); do
    running "$pid" || break
    sleep 0.2
done
if running "$pid"; then
    kill -KILL "$pid"
    cat "$log"
    fail "Velkor.app did not quit on SIGTERM"
fi
status=0
wait "$pid" || status=$?
cat "$log"
[ "$status" -eq 0 ] || fail "Velkor.app quit with status $status"
echo "velkor: Velkor.app started, ran ${seconds}s and quit cleanly"
