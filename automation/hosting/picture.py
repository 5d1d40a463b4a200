#!/usr/bin/env python3
"""Makes a bitmap file of a picture drawn with letters: picture.py PICTURE BITMAP.

The picture starts with one line per letter, the letter and its colour (six hexadecimal digits: red, green, blue); behind
an empty line stands the picture, one line per row and one letter per pixel. Tool boxes take the colour of the lower left
pixel as transparent. The bitmap has 24 bits per pixel.
"""

import struct
import sys


def parse(text):
    """The rows of the picture from the top, each a list of (red, green, blue)."""
    legend, picture = text.rstrip("\n").split("\n\n")
    colours = {line[0]: tuple(bytes.fromhex(line[2:])) for line in legend.split("\n")}
    rows = [[colours[letter] for letter in line] for line in picture.split("\n")]
    assert all(len(row) == len(rows[0]) for row in rows), "rows of different lengths"
    return rows


def bitmap(rows):
    """A bitmap file: header, description, and the rows from the bottom, each filled up to four bytes."""
    lines = [b"".join(bytes(reversed(colour)) for colour in row) for row in reversed(rows)]
    pixels = b"".join(line + bytes(-len(line) % 4) for line in lines)
    start = 14 + 40
    header = struct.pack("<2sIHHI", b"BM", start + len(pixels), 0, 0, start)
    description = struct.pack("<IiiHHIIiiII", 40, len(rows[0]), len(rows), 1, 24, 0, len(pixels), 0, 0, 0, 0)
    return header + description + pixels


if __name__ == "__main__":
    with open(sys.argv[1], encoding="ascii") as source:
        made = bitmap(parse(source.read()))
    with open(sys.argv[2], "wb") as target:
        target.write(made)
