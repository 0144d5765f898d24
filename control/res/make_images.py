#!/usr/bin/env python3
"""Draws the control's toolbox bitmap (16x15) and the About box icon (32x32).

The images are committed; run this again only to change them.
"""
import struct


def picture(width, height):
    """A framed landscape: sky, sun, two hills. Rows top to bottom, (r, g, b)."""
    sky, sun, hill, far, frame = (150, 200, 255), (255, 210, 40), (40, 140, 60), (90, 170, 90), (40, 40, 40)
    rows = []
    for y in range(height):
        row = []
        for x in range(width):
            fx, fy = x / (width - 1), y / (height - 1)
            if x == 0 or y == 0 or x == width - 1 or y == height - 1:
                c = frame
            elif (fx - 0.72) ** 2 + (fy - 0.28) ** 2 < 0.018:
                c = sun
            elif fy > 0.75 - 0.35 * (1 - abs(fx - 0.3) / 0.45):
                c = hill
            elif fy > 0.8 - 0.3 * (1 - abs(fx - 0.75) / 0.4):
                c = far
            else:
                c = sky
            row.append(c)
        rows.append(row)
    return rows


def bmp(width, height):
    stride = (width * 3 + 3) & ~3
    pixels = b""
    for row in reversed(picture(width, height)):
        line = b"".join(bytes((b, g, r)) for r, g, b in row)
        pixels += line + b"\0" * (stride - len(line))
    header = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(pixels), 2835, 2835, 0, 0)
    return b"BM" + struct.pack("<IHHI", 14 + len(header) + len(pixels), 0, 0, 14 + len(header)) + header + pixels


def ico(size):
    pixels = b""
    for row in reversed(picture(size, size)):
        pixels += b"".join(bytes((b, g, r, 255)) for r, g, b in row)
    mask = b"\0" * (((size + 31) // 32) * 4 * size)
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, len(pixels) + len(mask), 0, 0, 0, 0)
    image = header + pixels + mask
    directory = struct.pack("<HHH", 0, 1, 1) + struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(image), 22)
    return directory + image


if __name__ == "__main__":
    with open("Toolbox.bmp", "wb") as f:
        f.write(bmp(16, 15))
    with open("Lumbrel.ico", "wb") as f:
        f.write(ico(32))
