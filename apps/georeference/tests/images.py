"""images: PNG files made here, so that a test knows every pixel.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import struct
import zlib


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def write_png(path, width, height, colour=(200, 210, 190), line=(60, 60, 60), step=50):
    """An even colour with lines of a grid."""
    across = bytes(line) * width
    plain = b"".join(bytes(line if column % step == 0 else colour) for column in range(width))
    rows = b"".join(b"\0" + (across if row % step == 0 else plain) for row in range(height))
    head = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows)) +
                     chunk(b"IEND", b""))
    return path


def first_pixel(png):
    """Red, green and blue of the first pixel of a PNG file."""
    place, data = 8, b""
    while place < len(png):
        length, kind = struct.unpack(">I4s", png[place:place + 8])
        data += png[place + 8:place + 8 + length] if kind == b"IDAT" else b""
        place += 12 + length
    return tuple(zlib.decompress(data)[1:4]) # no filter changes the first pixel, for it has no neighbours
