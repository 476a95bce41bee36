#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs a build into a scratch root, under /usr as the Debian package does,
# and checks what the desktop and the user get from it: a program that answers
# --help and --version without a display or a file written, the update
# check's module where the program looks for it, a desktop entry, metainfo
# and man page that their validators pass, the icons at the sizes their
# folders promise, and the copyright and changelog.
#
#   installed-tree-test.sh BUILD_DIR SOURCE_DIR VERSION MODULE_DIR_FROM_EXECUTABLE
set -uo pipefail
build=$1 source=$2 version=$3 module_dir_from_executable=$4

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
root=$scratch/root
usr=$root/usr
failures=0
fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}

if ! DESTDIR=$root cmake --install "$build" --prefix /usr >"$scratch/install.log" 2>&1; then
    cat "$scratch/install.log"
    fail "cmake --install"
    exit 1
fi

# The program: --help and --version with no display reachable, no session
# bus, and a home it must leave empty.
velkor=$usr/bin/velkor
[ -x "$velkor" ] || fail "no executable at usr/bin/velkor"
home=$scratch/home
mkdir -p "$home"
run_bare() {
    env -i HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_RUNTIME_DIR="$home/run" \
        DISPLAY=:4711 PATH=/usr/bin:/bin "$velkor" "$@"
}
out=$(run_bare --version 2>&1) || fail "velkor --version exits with $?: $out"
[ "$out" = "Velkor $version" ] || fail "velkor --version says '$out', not 'Velkor $version'"
out=$(run_bare --help 2>&1) || fail "velkor --help exits with $?: $out"
case $out in
"Usage: velkor [--help | --version]"*) ;;
*) fail "velkor --help says: $out" ;;
esac
left=$(find "$home" -mindepth 1)
[ -z "$left" ] || fail "--help and --version created files: $left"

module=$(realpath -m "$usr/bin/$module_dir_from_executable/velkor-feed-downloader.so")
[ -f "$module" ] || fail "the update check's module is not at $module"
[ ! -e "$usr/bin/velkor-feed-downloader.so" ] || fail "the module is installed in bin/"

# The desktop entry, starting the installed program and showing its icon.
desktop=$usr/share/applications/org.velkor.Velkor.desktop
out=$(desktop-file-validate "$desktop" 2>&1)
[ $? -eq 0 ] && [ -z "$out" ] || fail "desktop-file-validate: $out"
grep -qx "Exec=velkor" "$desktop" || fail "the desktop entry does not start velkor"
grep -qx "Icon=org.velkor.Velkor" "$desktop" || fail "the desktop entry names another icon"

# The icons: an SVG for every size, and PNGs as large as their folders say.
icons=$usr/share/icons/hicolor
grep -q "<svg" "$icons/scalable/apps/org.velkor.Velkor.svg" 2>/dev/null ||
    fail "no scalable icon"
for size in 16 22 24 32 48 64 128 256 512; do
    png=$icons/${size}x${size}/apps/org.velkor.Velkor.png
    file -b "$png" 2>/dev/null | grep -q "^PNG image data, $size x $size," ||
        fail "$png is not a ${size}x${size} PNG"
done

# The metainfo, offline (the project's web address may be a placeholder), and
# every screenshot it names present in docs/screenshots.
metainfo=$usr/share/metainfo/org.velkor.Velkor.metainfo.xml
out=$(appstreamcli validate --no-net --strict "$metainfo" 2>&1) || fail "appstreamcli validate: $out"
grep -q "<release version=\"$version\"" "$metainfo" || fail "the metainfo lacks release $version"
shots=$(grep -o '<image[^>]*>[^<]*</image>' "$metainfo" | sed 's|.*/\([^/<]*\)</image>|\1|')
[ -n "$shots" ] || fail "the metainfo shows no screenshots"
for shot in $shots; do
    [ -f "$source/docs/screenshots/$shot" ] || fail "docs/screenshots/$shot, named in the metainfo, is missing"
done

# The man page, as lintian reads it.
man=$usr/share/man/man1/velkor.1.gz
[ -f "$man" ] || fail "no man page"
out=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$man" 2>&1 >/dev/null)
[ -z "$out" ] || fail "man page warnings: $out"
zcat "$man" | grep -q "^\.TH VELKOR 1 .*\"Velkor $version\"" || fail "the man page is not for $version"

for doc in copyright changelog.gz; do
    [ -s "$usr/share/doc/velkor/$doc" ] || fail "no usr/share/doc/velkor/$doc"
done

if [ $failures -ne 0 ]; then
    echo "$failures check(s) failed"
    exit 1
fi
echo "installed tree under $root/usr: all checks passed"
