#!/usr/bin/env python3
"""Draws EditKel's program icon: a blue tile with a ductwork elbow and a
settings slider, at 16, 32 and 48 pixels with a smooth alpha edge.

Writes app/res/EditKel.ico. Run from anywhere:  python3 tools/images/make_icon.py
Only the Python standard library is needed; the shapes come from make_images.py.
"""
import os
import struct
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from make_images import (BLUE, BLUE_DARK, WHITE, YELLOW, YELLOW_DARK, arc_points, both, circle,
                         minus, outline, polygon, polyline, rect)

SIZES = (16, 32, 48)
SAMPLES = 6


def rounded_tile(x1, y1, x2, y2, r):
    corners = [circle(x1 + r, y1 + r, r), circle(x2 - r, y1 + r, r), circle(x1 + r, y2 - r, r),
               circle(x2 - r, y2 - r, r)]
    body = [rect(x1 + r, y1, x2 - r, y2), rect(x1, y1 + r, x2, y2 - r)]
    return lambda x, y: any(s(x, y) for s in corners + body)


def shapes():
    """(shape, colour) pairs in a 16 x 16 design grid, drawn in order."""
    tile = rounded_tile(0.3, 0.3, 15.7, 15.7, 2.6)
    # The elbow: a thick quarter bend with a flange at each end.
    bend = polyline([(3.0, 13.0)] + arc_points(9.5, 13.0, 6.5, 180, 90, 18) + [(13.0, 6.5)], 3.4)
    flange_a = rect(1.6, 12.2, 4.4, 13.6)
    flange_b = rect(12.3, 5.0, 13.7, 8.0)
    # A settings slider across the top left.
    slider = rect(2.4, 3.2, 9.6, 4.2)
    knob = circle(6.8, 3.7, 1.6)
    return [
        (tile, BLUE),
        (minus(tile, rounded_tile(1.1, 1.1, 14.9, 14.9, 2.0)), BLUE_DARK),
        (bend, WHITE),
        (both(tile, flange_a), WHITE),
        (both(tile, flange_b), WHITE),
        (slider, WHITE),
        (knob, YELLOW),
    ]


def render(size):
    """Rows of (r, g, b, a), top row first; coverage of the tile gives the alpha."""
    layers = shapes()
    rows = []
    for py in range(size):
        row = []
        for px in range(size):
            colour_sum = [0.0, 0.0, 0.0]
            covered = 0
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    x = (px + (sx + 0.5) / SAMPLES) * 16.0 / size
                    y = (py + (sy + 0.5) / SAMPLES) * 16.0 / size
                    colour = None
                    for shape, fill in layers:
                        if shape(x, y):
                            colour = fill
                    if colour is not None:
                        covered += 1
                        for i in range(3):
                            colour_sum[i] += colour[i]
            if covered:
                r, g, b = (int(round(c / covered)) for c in colour_sum)
                row.append((r, g, b, int(round(255 * covered / SAMPLES ** 2))))
            else:
                row.append((0, 0, 0, 0))
        rows.append(row)
    return rows


def icon_image(size):
    """One ICO entry: BITMAPINFOHEADER, 32-bit BGRA rows bottom-up, AND mask."""
    rows = render(size)
    header = struct.pack('<IiiHHIIiiII', 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    pixels = b''.join(bytes((b, g, r, a)) for row in reversed(rows) for (r, g, b, a) in row)
    mask_stride = ((size + 31) // 32) * 4
    mask = b''
    for row in reversed(rows):
        bits = bytearray(mask_stride)
        for x, (_, _, _, a) in enumerate(row):
            if a == 0:
                bits[x // 8] |= 0x80 >> (x % 8)
        mask += bytes(bits)
    return header + pixels + mask


def main():
    images = [icon_image(size) for size in SIZES]
    offset = 6 + 16 * len(images)
    directory = struct.pack('<HHH', 0, 1, len(images))
    for size, image in zip(SIZES, images):
        directory += struct.pack('<BBBBHHII', size % 256, size % 256, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    target = os.path.join(root, 'app', 'res', 'EditKel.ico')
    os.makedirs(os.path.dirname(target), exist_ok=True)
    with open(target, 'wb') as f:
        f.write(directory + b''.join(images))
    print('wrote', target)


if __name__ == '__main__':
    main()
