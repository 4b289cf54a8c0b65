#!/usr/bin/env python3
"""Draws the application's shared image list as bitmap strips.

Writes framework/res/images16.bmp, images24.bmp and images32.bmp: 24-bit BMPs,
one row of square images (16, 24 or 32 pixels) side by side. Magenta
(255, 0, 255) is the mask colour: those pixels are transparent in the image
list. The images are drawn from shapes in a 16 by 16 unit design grid and
rendered at each size with 4 x 4 samples per pixel; a pixel is drawn when at
least half of its samples are covered, so the edges against the mask stay
crisp while edges between shapes inside an image are smoothed.

Run from anywhere:  python3 tools/images/make_images.py
Only the Python standard library is needed.
"""
import math
import os
import struct

MASK = (255, 0, 255)
SIZES = (16, 24, 32)
SAMPLES = 4

# Colours.
INK = (52, 52, 60)
PAPER = (252, 252, 250)
PAPER_SHADE = (214, 218, 226)
LINES = (150, 160, 180)
BLUE = (46, 116, 210)
BLUE_LIGHT = (120, 180, 240)
BLUE_DARK = (22, 62, 140)
GREEN = (52, 168, 70)
GREEN_DARK = (22, 104, 40)
RED = (214, 48, 48)
RED_DARK = (140, 22, 22)
YELLOW = (250, 208, 90)
YELLOW_LIGHT = (255, 232, 150)
YELLOW_DARK = (176, 124, 24)
GREY = (128, 132, 140)
GREY_LIGHT = (200, 204, 210)
WHITE = (255, 255, 255)


# --- shapes: each answers whether a point (design units) is covered ---------

def polygon(points):
    def inside(x, y):
        result = False
        count = len(points)
        for i in range(count):
            x1, y1 = points[i]
            x2, y2 = points[(i + 1) % count]
            if (y1 > y) != (y2 > y):
                cross = x1 + (y - y1) * (x2 - x1) / (y2 - y1)
                if x < cross:
                    result = not result
        return result
    return inside


def rect(x1, y1, x2, y2):
    return lambda x, y: x1 <= x <= x2 and y1 <= y <= y2


def ellipse(cx, cy, rx, ry):
    return lambda x, y: ((x - cx) / rx) ** 2 + ((y - cy) / ry) ** 2 <= 1.0


def circle(cx, cy, r):
    return ellipse(cx, cy, r, r)


def segment_distance(x, y, x1, y1, x2, y2):
    dx, dy = x2 - x1, y2 - y1
    length = dx * dx + dy * dy
    t = 0.0 if length == 0 else max(0.0, min(1.0, ((x - x1) * dx + (y - y1) * dy) / length))
    px, py = x1 + t * dx, y1 + t * dy
    return math.hypot(x - px, y - py)


def polyline(points, width, closed=False):
    pairs = list(zip(points, points[1:]))
    if closed:
        pairs.append((points[-1], points[0]))
    half = width / 2.0

    def inside(x, y):
        return any(segment_distance(x, y, a[0], a[1], b[0], b[1]) <= half for a, b in pairs)
    return inside


def outline(points, width):
    return polyline(points, width, closed=True)


def ring(cx, cy, r, width):
    half = width / 2.0
    return lambda x, y: abs(math.hypot(x - cx, y - cy) - r) <= half


def arc_points(cx, cy, r, start, end, steps=24):
    """Points on an arc; angles in degrees, 0 = east, counter-clockwise on screen."""
    result = []
    for i in range(steps + 1):
        a = math.radians(start + (end - start) * i / steps)
        result.append((cx + r * math.cos(a), cy - r * math.sin(a)))
    return result


def both(a, b):
    return lambda x, y: a(x, y) and b(x, y)


def minus(a, b):
    return lambda x, y: a(x, y) and not b(x, y)


def filled(points, fill, ink=INK, width=1.0):
    """A polygon with its outline."""
    return [(polygon(points), fill), (outline(points, width), ink)]


# --- the images -------------------------------------------------------------

def page(x1, y1, x2, y2, fold=3.0):
    points = [(x1, y1), (x2 - fold, y1), (x2, y1 + fold), (x2, y2), (x1, y2)]
    corner = [(x2 - fold, y1), (x2 - fold, y1 + fold), (x2, y1 + fold)]
    return filled(points, PAPER) + [(polygon(corner), PAPER_SHADE), (outline(corner, 0.8), INK)]


def text_lines(x1, x2, ys):
    return [(rect(x1, y - 0.4, x2, y + 0.4), LINES) for y in ys]


def folder(x1, y1, x2, y2, open_front=True):
    tab = [(x1, y1 + 1.5), (x1 + 1, y1), (x1 + 5, y1), (x1 + 6, y1 + 1.5), (x2, y1 + 1.5), (x2, y2),
           (x1, y2)]
    shapes = filled(tab, YELLOW_DARK)
    if open_front:
        front = [(x1 + 2.5, y1 + 4.5), (x2 + 1, y1 + 4.5), (x2 - 1.5, y2), (x1, y2)]
    else:
        front = [(x1, y1 + 3), (x2, y1 + 3), (x2, y2), (x1, y2)]
    return shapes + filled(front, YELLOW)


def arrow(direction, fill=BLUE, ink=BLUE_DARK):
    # An arrow pointing up in the design grid, turned for the other directions.
    up = [(8, 1.5), (14.5, 8), (10.5, 8), (10.5, 14.5), (5.5, 14.5), (5.5, 8), (1.5, 8)]
    turn = {'up': lambda p: p,
            'down': lambda p: (p[0], 16 - p[1]),
            'left': lambda p: (p[1], p[0]),
            'right': lambda p: (16 - p[1], p[0])}[direction]
    return filled([turn(p) for p in up], fill, ink)


def badge(fill, ink):
    return [(circle(8, 8, 7), fill), (ring(8, 8, 6.6, 1.0), ink)]


def curved_arrow(clockwise):
    # A three-quarter arc with a head: undo turns left, redo turns right.
    mirror = (lambda p: (16 - p[0], p[1])) if clockwise else (lambda p: p)
    arc = [mirror(p) for p in arc_points(8.5, 9.5, 4.5, 170, -60, 20)]
    head = [mirror(p) for p in [(0.8, 7.0), (7.0, 7.0), (3.9, 12.2)]]
    body = [mirror(p) for p in arc_points(8.5, 9.5, 4.5, 170, -60, 20)]
    return [(polyline(body, 3.2), BLUE_DARK), (polyline(arc, 1.6), BLUE_LIGHT)] + filled(head, BLUE, BLUE_DARK)


def question_mark():
    hook = arc_points(8, 6, 2.6, 160, -60, 16) + [(8, 9.2), (8, 10.4)]
    return badge(BLUE, BLUE_DARK) + [(polyline(hook, 1.9), WHITE), (circle(8, 12.7, 1.15), WHITE)]


IMAGES = [
    # 0 new document
    lambda: page(2.5, 1, 13.5, 15) + [(rect(5.2, 9.4, 10.8, 10.8), GREEN), (rect(7.3, 7.3, 8.7, 12.9), GREEN)],
    # 1 open folder
    lambda: folder(1, 3, 14, 13),
    # 2 save
    lambda: filled([(1.5, 1.5), (12.5, 1.5), (14.5, 3.5), (14.5, 14.5), (1.5, 14.5)], BLUE, BLUE_DARK)
    + [(rect(4, 2, 12, 6.5), PAPER), (rect(9.5, 2.5, 11, 5.5), GREY), (rect(4, 9, 12, 14), GREY_LIGHT)],
    # 3 copy
    lambda: page(1, 1, 10, 11, 2.5) + page(6, 5, 15, 15, 2.5) + text_lines(7.5, 12.5, [9, 11, 13]),
    # 4 paste
    lambda: filled([(2, 2.5), (13, 2.5), (13, 15), (2, 15)], YELLOW_DARK)
    + filled([(5, 1), (10, 1), (10, 4), (5, 4)], GREY_LIGHT) + page(6, 6, 14.5, 15, 2.5),
    # 5 undo
    lambda: curved_arrow(False),
    # 6 redo
    lambda: curved_arrow(True),
    # 7 print
    lambda: page(4, 1, 12, 7, 2) + filled([(1, 6), (15, 6), (15, 12), (1, 12)], GREY_LIGHT, INK)
    + [(rect(12, 7.5, 13.5, 8.5), GREEN)] + filled([(4, 10), (12, 10), (12, 15), (4, 15)], PAPER),
    # 8 find
    lambda: [(polyline([(10, 10), (14.5, 14.5)], 3.0), INK), (circle(6.5, 6.5, 5), BLUE_LIGHT),
             (ring(6.5, 6.5, 4.6, 1.4), INK)],
    # 9 properties
    lambda: page(2, 1, 14, 15, 3) + [(rect(4, y - 0.6, 5.2, y + 0.6), BLUE) for y in (6, 9, 12)]
    + text_lines(6.5, 12, [6, 9, 12]),
    # 10 delete
    lambda: [(polyline([(3, 3), (13, 13)], 4.4), RED_DARK), (polyline([(13, 3), (3, 13)], 4.4), RED_DARK),
             (polyline([(3, 3), (13, 13)], 2.6), RED), (polyline([(13, 3), (3, 13)], 2.6), RED)],
    # 11 refresh
    lambda: [(polyline(arc_points(8, 8, 5, 100, -200, 28), 3.2), GREEN_DARK),
             (polyline(arc_points(8, 8, 5, 100, -200, 28), 1.6), GREEN)]
    + filled([(5.2, 0.6), (10.6, 3.4), (5.6, 6.6)], GREEN, GREEN_DARK),
    # 12 browse (a folder and an ellipsis)
    lambda: folder(1, 1.5, 14, 10.5)
    + [(circle(x, 13.3, 1.55), INK) for x in (4, 8, 12)],
    # 13 help
    question_mark,
    # 14 information
    lambda: badge(BLUE, BLUE_DARK) + [(circle(8, 4.6, 1.3), WHITE), (rect(7, 7, 9, 12.5), WHITE)],
    # 15 warning
    lambda: filled([(8, 1), (15.2, 14.5), (0.8, 14.5)], YELLOW, YELLOW_DARK)
    + [(rect(7.1, 5, 8.9, 10.5), INK), (circle(8, 12.4, 1.1), INK)],
    # 16 add
    lambda: filled([(6, 1.5), (10, 1.5), (10, 6), (14.5, 6), (14.5, 10), (10, 10), (10, 14.5), (6, 14.5),
                    (6, 10), (1.5, 10), (1.5, 6), (6, 6)], GREEN, GREEN_DARK),
    # 17 remove
    lambda: filled([(1.5, 6), (14.5, 6), (14.5, 10), (1.5, 10)], RED, RED_DARK),
    # 18 move left
    lambda: arrow('left'),
    # 19 move up
    lambda: arrow('up'),
    # 20 move right
    lambda: arrow('right'),
    # 21 move down
    lambda: arrow('down'),
    # 22 check
    lambda: [(polyline([(2, 8.5), (6.2, 12.8), (14, 3.5)], 4.2), GREEN_DARK),
             (polyline([(2, 8.5), (6.2, 12.8), (14, 3.5)], 2.4), GREEN)],
    # 23 web (a globe)
    lambda: [(circle(8, 8, 7), BLUE_LIGHT)]
    + [(both(circle(8, 8, 6.6), polyline(line, 0.9)), BLUE_DARK)
       for line in ([(1, 8), (15, 8)], [(8, 1), (8, 15)], [(1, 4.5), (15, 4.5)], [(1, 11.5), (15, 11.5)])]
    + [(polyline([(8 + 3.4 * math.cos(math.radians(a)), 8 + 6.8 * math.sin(math.radians(a)))
                  for a in range(0, 361, 15)], 0.9), BLUE_DARK),
       (ring(8, 8, 6.6, 1.0), BLUE_DARK)],
]


def render(shapes, size):
    """The pixels of one image: a list of rows, each a list of colours or None."""
    scale = 16.0 / size
    step = 1.0 / SAMPLES
    pixels = []
    for py in range(size):
        row = []
        for px in range(size):
            colours = []
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    x = (px + (sx + 0.5) * step) * scale
                    y = (py + (sy + 0.5) * step) * scale
                    found = None
                    for covers, colour in reversed(shapes):
                        if covers(x, y):
                            found = colour
                            break
                    if found is not None:
                        colours.append(found)
            if len(colours) * 2 >= SAMPLES * SAMPLES:
                row.append(tuple(round(sum(c[i] for c in colours) / len(colours)) for i in range(3)))
            else:
                row.append(None)
        pixels.append(row)
    return pixels


def write_bmp(path, width, height, pixel):
    """A bottom-up 24-bit BMP; pixel(x, y) answers (r, g, b) with y from the top."""
    stride = (width * 3 + 3) & ~3
    body = bytearray()
    for y in range(height - 1, -1, -1):
        line = bytearray()
        for x in range(width):
            r, g, b = pixel(x, y)
            line += bytes((b, g, r))
        line += bytes(stride - len(line))
        body += line
    header = struct.pack('<2sIHHI', b'BM', 14 + 40 + len(body), 0, 0, 14 + 40)
    info = struct.pack('<IiiHHIIiiII', 40, width, height, 1, 24, 0, len(body), 2835, 2835, 0, 0)
    with open(path, 'wb') as out:
        out.write(header + info + body)


def main():
    root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    target = os.path.join(root, 'framework', 'res')
    os.makedirs(target, exist_ok=True)
    for size in SIZES:
        images = [render(make(), size) for make in IMAGES]

        def pixel(x, y, images=images, size=size):
            colour = images[x // size][y][x % size]
            if colour is None:
                return MASK
            # Never the mask colour itself.
            return (254, 0, 254) if colour == MASK else colour

        path = os.path.join(target, 'images%d.bmp' % size)
        write_bmp(path, size * len(images), size, pixel)
        print('wrote %s (%d images of %d px)' % (os.path.relpath(path, root), len(images), size))


if __name__ == '__main__':
    main()
