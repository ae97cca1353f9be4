#!/usr/bin/env python3
"""Draws the installer's icon and pictures: a frame of film with a play mark. Run by hand after a change; what it writes is
committed beside it, so that packaging needs no drawing program.

    packaging/artwork/make_artwork.py
"""

import pathlib
import struct
import zlib

HERE = pathlib.Path(__file__).resolve().parent
GROUND = (23, 32, 42)
FILM = (236, 240, 241)
PICTURE = (22, 136, 125)
MARK = (255, 255, 255)


def rounded(x, y, left, top, right, bottom, radius):
    """Inside a rectangle with round corners?"""
    dx = max(left + radius - x, 0, x - (right - radius))
    dy = max(top + radius - y, 0, y - (bottom - radius))
    return left <= x <= right and top <= y <= bottom and dx * dx + dy * dy <= radius * radius


def film_at(x, y):
    """The colour of the film frame at a point of the unit square, or None beside it."""
    if not rounded(x, y, 0.06, 0.14, 0.94, 0.86, 0.08):
        return None
    for row in (0.2, 0.8):
        for hole in range(6):
            middle = 0.15 + hole * 0.14
            if rounded(x, y, middle - 0.035, row - 0.028, middle + 0.035, row + 0.028, 0.015):
                return GROUND
    if rounded(x, y, 0.13, 0.27, 0.87, 0.73, 0.03):
        # A triangle that points to the right.
        if 0.40 <= x <= 0.66 and abs(y - 0.5) <= 0.16 * (0.66 - x) / 0.26:
            return MARK
        return PICTURE
    return FILM


def draw(width, height, left, top, size, ground):
    """Rows of (r, g, b, a), top first: a film frame of `size` pixels at (left, top); beside it `ground`, or nothing."""
    samples = 4
    rows = []
    for y in range(height):
        row = []
        for x in range(width):
            total, covered = [0, 0, 0], 0
            for sub_y in range(samples):
                for sub_x in range(samples):
                    colour = film_at((x + (sub_x + 0.5) / samples - left) / size,
                                     (y + (sub_y + 0.5) / samples - top) / size) or ground
                    if colour:
                        covered += 1
                        total = [sum(pair) for pair in zip(total, colour)]
            row.append((*(part // max(covered, 1) for part in total), 255 * covered // samples**2))
        rows.append(row)
    return rows


def png(rows):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    data = b"".join(b"\0" + bytes(part for pixel in row for part in pixel) for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">2I5B", len(rows[0]), len(rows), 8, 6, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(data, 9)) + chunk(b"IEND", b""))


def icon_bitmap(rows):
    size = len(rows)
    colours = b"".join(bytes((b, g, r, a)) for row in reversed(rows) for r, g, b, a in row)
    mask = b"\0" * ((size + 31) // 32 * 4 * size)     # the alpha says it all
    return struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, len(colours) + len(mask), 0, 0, 0, 0) + colours + mask


def icon(path):
    pictures = [(size, icon_bitmap(draw(size, size, 0, 0, size, None))) for size in (16, 24, 32, 48)]
    pictures.append((256, png(draw(256, 256, 0, 0, 256, None))))
    directory, offset = struct.pack("<3H", 0, 1, len(pictures)), 6 + 16 * len(pictures)
    for size, data in pictures:
        directory += struct.pack("<4B2H2I", size % 256, size % 256, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    path.write_bytes(directory + b"".join(data for _, data in pictures))


def bitmap(path, rows):
    width, height = len(rows[0]), len(rows)
    padding = b"\0" * (-3 * width % 4)
    data = b"".join(b"".join(bytes((b, g, r)) for r, g, b, _ in row) + padding for row in reversed(rows))
    path.write_bytes(struct.pack("<2sIHHI", b"BM", 54 + len(data), 0, 0, 54) +
                     struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(data), 2835, 2835, 0, 0) + data)


if __name__ == "__main__":
    icon(HERE / "setup.ico")
    bitmap(HERE / "welcome.bmp", draw(164, 314, 22, 40, 120, GROUND))
    bitmap(HERE / "header.bmp", draw(150, 57, 92, 2, 53, (255, 255, 255)))
