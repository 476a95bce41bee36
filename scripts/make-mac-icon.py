#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws Velkor's app icon (an amber rounded square with a dark V) and writes
it as an .icns file holding 128, 256 and 512 pixel PNG images. Standard
library only, so it runs anywhere:  scripts/make-mac-icon.py OUT.icns"""
import math
import struct
import sys
import zlib

AMBER = (0xFE, 0xBC, 0x2E)
INK = (0x1E, 0x1E, 0x1E)


def rounded_square_distance(x, y, half, radius):
    qx, qy = abs(x) - (half - radius), abs(y) - (half - radius)
    outside = math.hypot(max(qx, 0.0), max(qy, 0.0))
    return outside + min(max(qx, qy), 0.0) - radius


def segment_distance(px, py, ax, ay, bx, by):
    dx, dy = bx - ax, by - ay
    t = max(0.0, min(1.0, ((px - ax) * dx + (py - ay) * dy) / (dx * dx + dy * dy)))
    return math.hypot(px - (ax + t * dx), py - (ay + t * dy))


def coverage(distance):
    return max(0.0, min(1.0, 0.5 - distance))


def pixel(x, y, size):
    # Coordinates in a 24-unit design grid centred on the image.
    scale = size / 24.0
    gx, gy = (x + 0.5) / scale - 12.0, (y + 0.5) / scale - 12.0
    square = coverage(rounded_square_distance(gx, gy, 10.5, 2.6) * scale)
    if square == 0.0:
        return (0, 0, 0, 0)
    stroke = 1.9 / 2
    v = min(segment_distance(gx, gy, -5.0, -5.5, 0.0, 5.5),
            segment_distance(gx, gy, 5.0, -5.5, 0.0, 5.5)) - stroke
    ink = coverage(v * scale)
    rgb = tuple(round(a * (1 - ink) + b * ink) for a, b in zip(AMBER, INK))
    return rgb + (round(255 * square),)


def png(size):
    rows = b"".join(
        b"\x00" + b"".join(bytes(pixel(x, y, size)) for x in range(size)) for y in range(size))

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
            chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


def icns(entries):
    body = b"".join(kind + struct.pack(">I", len(data) + 8) + data for kind, data in entries)
    return b"icns" + struct.pack(">I", len(body) + 8) + body


if __name__ == "__main__":
    images = [(b"ic07", png(128)), (b"ic08", png(256)), (b"ic09", png(512))]
    with open(sys.argv[1], "wb") as out:
        out.write(icns(images))
