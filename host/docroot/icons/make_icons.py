#!/usr/bin/env python3
"""Draws the renderer's icons: a white loudspeaker with two sound waves on a blue square.

Writes icon-48.png and icon-120.png (24-bit RGB, as the device description lists them) next to this
script. The drawing is defined on the unit square and sampled 4x4 per pixel, so both sizes come from the
same shapes; the output is the same bytes on every run. Standard library only (zlib for the image data).

    python3 make_icons.py
"""

import math
import os
import struct
import zlib

BACKGROUND = (26, 86, 150)
FOREGROUND = (255, 255, 255)
SIZES = (48, 120)
SAMPLES = 4  # per pixel and axis


def in_speaker(x, y):
    """The loudspeaker: a box and the cone that opens to the right from it."""
    if 0.16 <= x <= 0.31 and 0.38 <= y <= 0.62:
        return True
    if 0.31 <= x <= 0.50:
        half_height = 0.12 + (x - 0.31) / (0.50 - 0.31) * (0.30 - 0.12)
        return abs(y - 0.5) <= half_height
    return False


def in_wave(x, y):
    """Two arcs around the cone's mouth, each within 50 degrees either side of the horizontal."""
    dx, dy = x - 0.50, y - 0.50
    if dx <= 0:
        return False
    if abs(math.degrees(math.atan2(dy, dx))) > 50:
        return False
    radius = math.hypot(dx, dy)
    return any(abs(radius - r) <= 0.035 for r in (0.16, 0.30))


def pixel(size, column, row):
    covered = 0
    for sy in range(SAMPLES):
        for sx in range(SAMPLES):
            x = (column + (sx + 0.5) / SAMPLES) / size
            y = (row + (sy + 0.5) / SAMPLES) / size
            if in_speaker(x, y) or in_wave(x, y):
                covered += 1
    share = covered / (SAMPLES * SAMPLES)
    return bytes(round(b + (f - b) * share) for b, f in zip(BACKGROUND, FOREGROUND))


def chunk(kind, data):
    body = kind + data
    return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)


def png(size):
    rows = b"".join(b"\x00" + b"".join(pixel(size, c, r) for c in range(size)) for r in range(size))
    header = struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0)  # 8 bits, RGB, no interlace
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 9)) +
            chunk(b"IEND", b""))


def main():
    folder = os.path.dirname(os.path.abspath(__file__))
    for size in SIZES:
        with open(os.path.join(folder, "icon-%d.png" % size), "wb") as out:
            out.write(png(size))


if __name__ == "__main__":
    main()
