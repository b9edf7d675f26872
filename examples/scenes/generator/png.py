"""PNG pictures with a palette or in full colour."""

import struct
import zlib


def _chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def _file(width, height, colour_type, parts, rows):
    header = struct.pack(">IIBBBBB", width, height, 8, colour_type, 0, 0, 0)
    raw = b"".join(b"\0" + row for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", header) + parts
            + _chunk(b"IDAT", zlib.compress(raw, 9)) + _chunk(b"IEND", b""))


def palette_png(width, height, palette, rows):
    """`palette`: up to 256 colours (r, g, b) from 0 to 255; `rows`: bytes of indices, top first."""
    colours = b"".join(bytes(c) for c in palette)
    return _file(width, height, 3, _chunk(b"PLTE", colours), rows)


def rgb_png(width, height, rows):
    """`rows`: three bytes a pixel, top first."""
    return _file(width, height, 2, b"", rows)
