#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws rendal.ico: a disc made of horizontal runs under a measuring arrow.

usage: draw_icon.py OUTPUT.ico

Only the standard library is needed. Every size is drawn on its own with
SAMPLES x SAMPLES points per pixel, so that the small ones stay crisp.
"""
import struct
import sys
import zlib

SIZES = (16, 24, 32, 48, 256)
SAMPLES = 4
ROWS = 7  # runs in the disc

BACKGROUND = (28, 38, 56)
RUN_COLOURS = ((0, 191, 255), (0, 250, 154))
ARROW = (255, 220, 0)


def inside_rounded_square(x, y):
    margin, radius = 0.02, 0.18
    dx = max(margin + radius - x, x - (1 - margin - radius), 0)
    dy = max(margin + radius - y, y - (1 - margin - radius), 0)
    return dx * dx + dy * dy <= radius * radius


def run_at(x, y):
    """Number of the disc's run at (x, y), or None."""
    radius, top = 0.36, 0.14
    row = int((y - top) / (2 * radius) * ROWS)
    if y < top or row >= ROWS:
        return None
    middle = top + (row + 0.5) * 2 * radius / ROWS
    if abs(y - middle) > 0.36 * 2 * radius / ROWS:
        return None
    half = (radius * radius - (middle - 0.5) ** 2) ** 0.5
    return row if abs(x - 0.5) <= half else None


def on_arrow(x, y):
    """A diagonal from bottom left to top right with a head at its end."""
    along, across = (x - y) / 2 ** 0.5, (x + y - 1) / 2 ** 0.5
    shaft = -0.46 <= along <= 0.30 and abs(across) <= 0.035
    head = 0.28 <= along <= 0.50 and abs(across) <= (0.50 - along) * 0.6
    return shaft or head


def colour_at(x, y):
    if not inside_rounded_square(x, y):
        return None
    if on_arrow(x, y):
        return ARROW
    run = run_at(x, y)
    return BACKGROUND if run is None else RUN_COLOURS[run % 2]


def pixel(size, column, row):
    """(blue, green, red, alpha) averaged over the pixel's samples."""
    step = 1 / (size * SAMPLES)
    hits = [colour_at(column / size + (i + 0.5) * step,
                      row / size + (j + 0.5) * step)
            for j in range(SAMPLES) for i in range(SAMPLES)]
    seen = [hit for hit in hits if hit]
    if not seen:
        return (0, 0, 0, 0)
    red, green, blue = (round(sum(c[k] for c in seen) / len(seen))
                        for k in range(3))
    return (blue, green, red, round(255 * len(seen) / len(hits)))


def picture(size):
    return [[pixel(size, column, row) for column in range(size)]
            for row in range(size)]


def bitmap(rows):
    """Icon image as a 32-bit bottom-up bitmap with an all-opaque mask."""
    size = len(rows)
    header = struct.pack('<IiiHHIIiiII', 40, size, 2 * size, 1, 32, 0,
                         0, 0, 0, 0, 0)
    colours = b''.join(bytes(p) for row in reversed(rows) for p in row)
    mask = b'\0' * ((size + 31) // 32 * 4 * size)
    return header + colours + mask


def png(rows):
    size = len(rows)

    def chunk(kind, data):
        check = zlib.crc32(kind + data)
        return struct.pack('>I', len(data)) + kind + data + struct.pack('>I', check)

    raw = b''.join(b'\0' + b''.join(bytes((r, g, b, a)) for b, g, r, a in row)
                   for row in rows)
    return (b'\x89PNG\r\n\x1a\n'
            + chunk(b'IHDR', struct.pack('>IIBBBBB', size, size, 8, 6, 0, 0, 0))
            + chunk(b'IDAT', zlib.compress(raw, 9)) + chunk(b'IEND', b''))


def icon():
    images = [png(picture(size)) if size == 256 else bitmap(picture(size))
              for size in SIZES]
    offset = 6 + 16 * len(images)
    entries = b''
    for size, image in zip(SIZES, images):
        entries += struct.pack('<BBBBHHII', size % 256, size % 256, 0, 0, 1,
                               32, len(image), offset)
        offset += len(image)
    return struct.pack('<HHH', 0, 1, len(images)) + entries + b''.join(images)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(sys.argv[1], 'wb') as output:
        output.write(icon())


if __name__ == '__main__':
    main()
