#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Velkor's app icon, an amber rounded square with a dark V, drawn from one
geometry into every file that ships it:

  dist/linux/icons/hicolor/scalable/apps/org.velkor.Velkor.svg
  dist/linux/icons/hicolor/<n>x<n>/apps/org.velkor.Velkor.png
  src/platform/mac/Velkor.icns   (16 to 512 points, at 1x and 2x)

The outputs are committed, so a build needs neither this script nor Python.
Run it after changing the geometry below; with --check it only reports files
that differ from what it would write (exit status 1). Standard library only.

  scripts/make-app-icon.py [--check]"""
import math
import os
import struct
import sys
import zlib

# The design: a 24-unit grid, origin at its centre.
AMBER = (0xFE, 0xBC, 0x2E)
INK = (0x1E, 0x1E, 0x1E)
GRID = 24.0
SQUARE_HALF = 10.5    # half the side of the rounded square
SQUARE_RADIUS = 2.6   # its corner radius
V_POINTS = ((-5.0, -5.5), (0.0, 5.5), (5.0, -5.5))  # left top, bottom, right top
V_STROKE = 1.9        # round caps and join

APP_ID = "org.velkor.Velkor"
HICOLOR_SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
# The element types of an .icns file that macOS picks from, each holding a
# PNG image of the given pixel size: 16, 32, 128, 256 and 512 points, at 1x
# and at 2x (Retina).
ICNS_ELEMENTS = (
    (b"icp4", 16), (b"ic11", 32),
    (b"icp5", 32), (b"ic12", 64),
    (b"ic07", 128), (b"ic13", 256),
    (b"ic08", 256), (b"ic14", 512),
    (b"ic09", 512), (b"ic10", 1024),
)

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
HICOLOR = os.path.join(ROOT, "dist", "linux", "icons", "hicolor")
ICNS_PATH = os.path.join(ROOT, "src", "platform", "mac", "Velkor.icns")


def hex_colour(rgb):
    return "#%02x%02x%02x" % rgb


def svg():
    def point(p):
        return "%g %g" % (p[0] + GRID / 2, p[1] + GRID / 2)

    corner = GRID / 2 - SQUARE_HALF
    side = 2 * SQUARE_HALF
    v_path = "M" + " L".join(point(p) for p in V_POINTS)
    return (
        '<svg xmlns="http://www.w3.org/2000/svg" width="%(g)g" height="%(g)g" '
        'viewBox="0 0 %(g)g %(g)g">\n'
        '  <rect x="%(c)g" y="%(c)g" width="%(s)g" height="%(s)g" rx="%(r)g" fill="%(amber)s"/>\n'
        '  <path d="%(v)s" fill="none" stroke="%(ink)s" stroke-width="%(w)g" '
        'stroke-linecap="round" stroke-linejoin="round"/>\n'
        "</svg>\n"
        % {"g": GRID, "c": corner, "s": side, "r": SQUARE_RADIUS, "amber": hex_colour(AMBER),
           "ink": hex_colour(INK), "v": v_path, "w": V_STROKE}
    ).encode()


def rounded_square_distance(x, y):
    qx = abs(x) - (SQUARE_HALF - SQUARE_RADIUS)
    qy = abs(y) - (SQUARE_HALF - SQUARE_RADIUS)
    outside = math.hypot(max(qx, 0.0), max(qy, 0.0))
    return outside + min(max(qx, qy), 0.0) - SQUARE_RADIUS


def segment_distance(px, py, a, b):
    dx, dy = b[0] - a[0], b[1] - a[1]
    t = max(0.0, min(1.0, ((px - a[0]) * dx + (py - a[1]) * dy) / (dx * dx + dy * dy)))
    return math.hypot(px - (a[0] + t * dx), py - (a[1] + t * dy))


def v_distance(x, y):
    segments = zip(V_POINTS, V_POINTS[1:])
    return min(segment_distance(x, y, a, b) for a, b in segments) - V_STROKE / 2


def coverage(distance_in_pixels):
    # A pixel-wide ramp across the edge: anti-aliasing at every size.
    return max(0.0, min(1.0, 0.5 - distance_in_pixels))


def pixel(x, y, size):
    scale = size / GRID
    gx, gy = (x + 0.5) / scale - GRID / 2, (y + 0.5) / scale - GRID / 2
    square = coverage(rounded_square_distance(gx, gy) * scale)
    if square == 0.0:
        return b"\x00\x00\x00\x00"
    ink = coverage(v_distance(gx, gy) * scale)
    rgb = bytes(round(a * (1 - ink) + b * ink) for a, b in zip(AMBER, INK))
    return rgb + bytes((round(255 * square),))


def png(size):
    rows = b"".join(
        b"\x00" + b"".join(pixel(x, y, size) for x in range(size)) for y in range(size))

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)  # 8-bit RGBA
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
            chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


def icns(images):
    entries = [(kind, images[size]) for kind, size in ICNS_ELEMENTS]
    # A table of contents first, as Apple's iconutil writes it.
    toc = b"".join(kind + struct.pack(">I", len(data) + 8) for kind, data in entries)
    body = b"TOC " + struct.pack(">I", len(toc) + 8) + toc
    body += b"".join(kind + struct.pack(">I", len(data) + 8) + data for kind, data in entries)
    return b"icns" + struct.pack(">I", len(body) + 8) + body


def outputs():
    sizes = set(HICOLOR_SIZES) | {size for _, size in ICNS_ELEMENTS}
    images = {size: png(size) for size in sorted(sizes)}
    files = {os.path.join(HICOLOR, "scalable", "apps", APP_ID + ".svg"): svg()}
    for size in HICOLOR_SIZES:
        files[os.path.join(HICOLOR, "%dx%d" % (size, size), "apps", APP_ID + ".png")] = images[size]
    files[ICNS_PATH] = icns(images)
    return files


def main(argv):
    check = argv[1:] == ["--check"]
    if argv[1:] and not check:
        sys.stderr.write(__doc__.rsplit("\n\n", 1)[1].strip() + "\n")
        return 2
    stale = []
    for path, data in outputs().items():
        try:
            with open(path, "rb") as existing:
                if existing.read() == data:
                    continue
        except FileNotFoundError:
            pass
        stale.append(os.path.relpath(path, ROOT))
        if not check:
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "wb") as out:
                out.write(data)
    for path in stale:
        print(("differs from the icon geometry: " if check else "wrote ") + path)
    return 1 if check and stale else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
