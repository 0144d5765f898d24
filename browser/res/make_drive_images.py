#!/usr/bin/env python3
"""Draws DriveImages.bmp, the strip of entry images of the drive list.

Eight pictures of 18 by 18 pixels, left to right: the Desktop, the product's
own folder, an unused slot, My Computer, a fixed drive, a removable drive, a
CD-ROM drive and a remote drive. The strip is 163 pixels wide, so the image
list that loads it counts nine images; the ninth and the unused slot are
pure white, the mask colour, and stay transparent. Nothing inside a picture
is pure white for the same reason.

Run from anywhere; writes the file beside this script:
    python3 browser/res/make_drive_images.py
"""
import os
import struct

CELL = 18
WIDTH = 163
HEIGHT = CELL

WHITE = (255, 255, 255)
BLACK = (0, 0, 0)
DARK = (64, 64, 64)
GREY = (128, 128, 128)
SILVER = (192, 192, 192)
LIGHT = (232, 232, 232)
NAVY = (0, 0, 128)
BLUE = (0, 96, 192)
SKY = (96, 160, 224)
TEAL = (0, 128, 128)
GREEN = (0, 192, 0)
YELLOW = (248, 208, 72)
OCHRE = (184, 144, 32)
RED = (200, 32, 32)
BEIGE = (224, 216, 184)

pixels = [[WHITE] * WIDTH for _ in range(HEIGHT)]


def put(cell, x, y, colour):
    if 0 <= x < CELL and 0 <= y < CELL:
        pixels[y][cell * CELL + x] = colour


def fill(cell, x0, y0, x1, y1, colour):
    """Fills the rectangle with corners (x0, y0) and (x1, y1), inclusive."""
    for y in range(y0, y1 + 1):
        for x in range(x0, x1 + 1):
            put(cell, x, y, colour)


def frame(cell, x0, y0, x1, y1, colour):
    for x in range(x0, x1 + 1):
        put(cell, x, y0, colour)
        put(cell, x, y1, colour)
    for y in range(y0, y1 + 1):
        put(cell, x0, y, colour)
        put(cell, x1, y, colour)


def disc(cell, cx, cy, radius, colour):
    for y in range(CELL):
        for x in range(CELL):
            if (x - cx) ** 2 + (y - cy) ** 2 <= radius * radius:
                put(cell, x, y, colour)


def drive_body(cell, top):
    """The slab that all drive pictures share, from row `top` down four rows."""
    fill(cell, 1, top, 16, top + 4, SILVER)
    frame(cell, 1, top, 16, top + 4, DARK)
    for x in range(2, 16):
        put(cell, x, top + 1, LIGHT)


# 0: the Desktop, a monitor on its stand.
fill(0, 1, 2, 16, 12, DARK)
fill(0, 2, 3, 15, 11, TEAL)
fill(0, 7, 13, 10, 14, GREY)
fill(0, 4, 15, 13, 15, DARK)

# 1: the product's folder: a yellow folder with a small picture on it.
fill(1, 1, 4, 7, 5, OCHRE)
fill(1, 1, 6, 16, 15, YELLOW)
frame(1, 1, 6, 16, 15, OCHRE)
fill(1, 6, 8, 12, 13, SKY)
frame(1, 6, 8, 12, 13, NAVY)
disc(1, 10, 10, 1, RED)
fill(1, 7, 12, 11, 12, GREEN)

# 2: unused; stays white.

# 3: My Computer: a monitor over a system unit.
fill(3, 3, 1, 14, 9, BEIGE)
frame(3, 3, 1, 14, 9, DARK)
fill(3, 5, 3, 12, 7, BLUE)
fill(3, 1, 11, 16, 16, BEIGE)
frame(3, 1, 11, 16, 16, DARK)
fill(3, 3, 13, 8, 13, GREY)
put(3, 14, 14, GREEN)

# 4: a fixed drive, its light on.
drive_body(4, 7)
fill(4, 13, 9, 14, 10, GREEN)

# 5: a removable drive: a diskette over the slab.
fill(5, 4, 0, 13, 8, NAVY)
fill(5, 6, 0, 11, 3, SILVER)
fill(5, 9, 1, 10, 2, DARK)
fill(5, 6, 6, 11, 8, LIGHT)
drive_body(5, 10)
fill(5, 4, 12, 12, 12, DARK)

# 6: a CD-ROM drive: a disc over the slab.
disc(6, 8, 5, 5, SILVER)
disc(6, 8, 5, 4, SKY)
disc(6, 8, 5, 1, LIGHT)
put(6, 8, 5, GREY)
drive_body(6, 11)
fill(6, 11, 13, 14, 13, DARK)

# 7: a remote drive: the slab on a network cable.
drive_body(7, 3)
fill(7, 13, 5, 14, 6, GREEN)
fill(7, 8, 8, 9, 13, DARK)
fill(7, 2, 14, 15, 15, DARK)
fill(7, 1, 14, 2, 16, RED)
fill(7, 15, 14, 16, 16, RED)


def write_bmp(path):
    stride = (WIDTH * 3 + 3) & ~3
    image_size = stride * HEIGHT
    header = struct.pack('<2sIHHI', b'BM', 14 + 40 + image_size, 0, 0, 14 + 40)
    info = struct.pack('<IiiHHIIiiII', 40, WIDTH, HEIGHT, 1, 24, 0, image_size, 2835, 2835, 0, 0)
    rows = []
    for y in range(HEIGHT - 1, -1, -1):
        row = bytearray()
        for r, g, b in pixels[y]:
            row += bytes((b, g, r))
        row += b'\0' * (stride - WIDTH * 3)
        rows.append(bytes(row))
    with open(path, 'wb') as out:
        out.write(header + info + b''.join(rows))


write_bmp(os.path.join(os.path.dirname(os.path.abspath(__file__)), 'DriveImages.bmp'))
