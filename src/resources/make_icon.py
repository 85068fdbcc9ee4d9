#!/usr/bin/env python3
"""Draws the updater's icon: a rounded teal tile with a white arrow pointing down onto a
white bar ("download and install"). Writes an .ico with 16x16 and 32x32 images, 32 bits
per pixel with alpha, as classic DIB images (XOR pixels plus AND mask).

Usage: make_icon.py OUTPUT.ico
"""
import struct
import sys


def inside_rounded(x, y, size, radius):
    cx = min(max(x, radius), size - 1 - radius)
    cy = min(max(y, radius), size - 1 - radius)
    return (x - cx) ** 2 + (y - cy) ** 2 <= radius ** 2


def pixel(x, y, size):
    """(b, g, r, a) of one pixel, drawn in a 32-unit design grid."""
    u = x * 32.0 / size + 16.0 / size  # pixel centre in design units
    v = y * 32.0 / size + 16.0 / size
    if not inside_rounded(x, y, size, max(2, size // 6)):
        return (0, 0, 0, 0)
    shade = int(40 * v / 32)
    tile = (150 - shade, 130 - shade // 2, 20, 255)  # teal, darker towards the bottom
    shaft = 13 <= u <= 19 and 5 <= v <= 16
    head = 16 <= v <= 23 and abs(u - 16) <= (23 - v) * 1.1
    bar = 25 <= v <= 27.5 and 7 <= u <= 25
    if shaft or head or bar:
        return (250, 250, 250, 255)
    return tile


def image(size):
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    rows = []
    mask_rows = []
    stride = ((size + 31) // 32) * 4
    for y in reversed(range(size)):  # bottom-up
        row = b""
        mask = bytearray(stride)
        for x in range(size):
            b, g, r, a = pixel(x, y, size)
            row += bytes((b, g, r, a))
            if a == 0:
                mask[x // 8] |= 0x80 >> (x % 8)
        rows.append(row)
        mask_rows.append(bytes(mask))
    return header + b"".join(rows) + b"".join(mask_rows)


def main():
    sizes = [16, 32]
    images = [image(s) for s in sizes]
    out = struct.pack("<HHH", 0, 1, len(images))
    offset = 6 + 16 * len(images)
    for size, data in zip(sizes, images):
        out += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    out += b"".join(images)
    with open(sys.argv[1], "wb") as f:
        f.write(out)


if __name__ == "__main__":
    main()
