#!/usr/bin/python3
"""Copies a TrueType font under another family name: name_font.py SOURCE TARGET FAMILY. A bold one
stays the bold one of its family.

With a name of its own the program's font cannot be mixed up with faces of its origin that a system
may have installed, and looks the same everywhere. Its lines are closer than those of a printed page:
a small screen has no room to give away. Its figures have one width, so that numbers below each other
line up. The tables are those of the OpenType format.
"""

import struct
import sys

HEADER = ">4sHHHH"  # version, number of tables, and three numbers for searching
RECORD = ">4sLLL"  # tag, checksum, offset, length
WINDOWS, UNICODE_BMP, ENGLISH = 3, 1, 0x409
FAMILY, STYLE, UNIQUE_ID, FULL_NAME, POSTSCRIPT_NAME = 1, 2, 3, 4, 6
KEPT_NAMES = (0, 5, 7, 8, 9, 10, 11, 12, 13, 14)  # copyright, version, makers, licence
WIDTH_CLASS_OFFSET, NORMAL_WIDTH = 6, 5  # in the table "OS/2"
ADJUSTMENT_OFFSET, ADJUSTMENT_MAGIC = 8, 0xB1B0AFBA  # in the table "head"
UNITS_OFFSET = 18  # in the table "head": the units of an em
ASCENT, DESCENT = 0.928, 0.236  # of a line, in ems
LINE_METRICS = ((b"hhea", 4, ">hhh"), (b"OS/2", 68, ">hhh"))  # ascent, descent, gap
CLIP_METRICS = (b"OS/2", 74, ">HH")  # ascent and descent, both positive


def read_tables(font):
    count = struct.unpack_from(HEADER, font)[1]
    tables = {}
    for i in range(count):
        tag, _, offset, length = struct.unpack_from(RECORD, font, 12 + 16 * i)
        tables[tag] = font[offset:offset + length]
    return tables


def read_names(table):
    """The English names, by their number."""
    _, count, storage = struct.unpack_from(">HHH", table)
    names = {}
    for i in range(count):
        platform, encoding, language, number, length, offset = struct.unpack_from(
            ">HHHHHH", table, 6 + 12 * i)
        if (platform, encoding, language) == (WINDOWS, UNICODE_BMP, ENGLISH):
            names[number] = table[storage + offset:storage + offset + length]
    return names


def make_names(old, family):
    names = {number: old[number] for number in KEPT_NAMES if number in old}
    style = old[STYLE].decode("utf-16-be")
    full = family if style == "Regular" else f"{family} {style}"
    for number, name in ((FAMILY, family), (STYLE, style), (UNIQUE_ID, full), (FULL_NAME, full),
                         (POSTSCRIPT_NAME, full.replace(" ", "-"))):
        names[number] = name.encode("utf-16-be")
    records, texts = b"", b""
    for number in sorted(names):
        records += struct.pack(">HHHHHH", WINDOWS, UNICODE_BMP, ENGLISH, number,
                               len(names[number]), len(texts))
        texts += names[number]
    return struct.pack(">HHH", 0, len(names), 6 + len(records)) + records + texts


def padded(table):
    return table + b"\0" * (-len(table) % 4)


def checksum(data):
    return sum(struct.unpack(f">{len(data) // 4}L", data)) & 0xFFFFFFFF


def assemble(version, tables):
    """The whole font and the offsets of its tables."""
    count = len(tables)
    selector = count.bit_length() - 1
    header = struct.pack(HEADER, version, count, 16 << selector, selector,
                         16 * count - (16 << selector))
    start = len(header) + 16 * count
    records, bodies, offsets = b"", b"", {}
    for tag in sorted(tables):
        body = padded(tables[tag])
        offsets[tag] = start + len(bodies)
        records += struct.pack(RECORD, tag, checksum(body), offsets[tag], len(tables[tag]))
        bodies += body
    return bytearray(header + records + bodies), offsets


def with_numbers(table, form, offset, *numbers):
    changed = bytearray(table)
    struct.pack_into(form, changed, offset, *numbers)
    return bytes(changed)


def set_line_metrics(tables):
    units = struct.unpack_from(">H", tables[b"head"], UNITS_OFFSET)[0]
    ascent, descent = round(ASCENT * units), round(DESCENT * units)
    for tag, offset, form in LINE_METRICS:
        tables[tag] = with_numbers(tables[tag], form, offset, ascent, -descent, 0)
    tag, offset, form = CLIP_METRICS
    tables[tag] = with_numbers(tables[tag], form, offset, ascent, descent)


def glyph_of(table, code):
    """The number of a character's glyph; the table is "cmap"."""
    count = struct.unpack_from(">H", table, 2)[0]
    records = (struct.unpack_from(">HHL", table, 4 + 8 * i) for i in range(count))
    start = next(offset for platform, encoding, offset in records
                 if (platform, encoding) == (WINDOWS, UNICODE_BMP))
    size = struct.unpack_from(">H", table, start + 6)[0]  # of each of the four lists, in bytes
    ends = start + 14
    firsts, deltas, ranges = ends + size + 2, ends + 2 * size + 2, ends + 3 * size + 2
    for at in range(0, size, 2):
        if code > struct.unpack_from(">H", table, ends + at)[0]:
            continue
        first, = struct.unpack_from(">H", table, firsts + at)
        delta, = struct.unpack_from(">H", table, deltas + at)
        distance, = struct.unpack_from(">H", table, ranges + at)
        if code < first or distance == 0:
            return (code + delta) & 0xFFFF if code >= first else 0
        return struct.unpack_from(">H", table, ranges + at + distance + 2 * (code - first))[0]
    return 0


def even_figures(tables):
    """Gives all figures the width of the narrowest, and keeps them in the middle of it."""
    glyphs = [glyph_of(tables[b"cmap"], code) for code in b"0123456789"]
    sizes = {glyph: struct.unpack_from(">Hh", tables[b"hmtx"], 4 * glyph) for glyph in glyphs}
    even = min(width for width, _ in sizes.values())
    for glyph, (width, left) in sizes.items():
        tables[b"hmtx"] = with_numbers(tables[b"hmtx"], ">Hh", 4 * glyph, even,
                                       left + (even - width) // 2)


def main(source, target, family):
    with open(source, "rb") as file:
        font = file.read()
    tables = read_tables(font)
    tables.pop(b"DSIG", None)  # would not fit any more
    tables[b"name"] = make_names(read_names(tables[b"name"]), family)
    # A width class of its own would make the toolkit look for a normal one elsewhere.
    tables[b"OS/2"] = with_numbers(tables[b"OS/2"], ">H", WIDTH_CLASS_OFFSET, NORMAL_WIDTH)
    set_line_metrics(tables)
    even_figures(tables)
    tables[b"head"] = with_numbers(tables[b"head"], ">L", ADJUSTMENT_OFFSET, 0)
    whole, offsets = assemble(font[:4], tables)
    struct.pack_into(">L", whole, offsets[b"head"] + ADJUSTMENT_OFFSET,
                     (ADJUSTMENT_MAGIC - checksum(whole)) & 0xFFFFFFFF)
    with open(target, "wb") as file:
        file.write(whole)


if __name__ == "__main__":
    main(*sys.argv[1:])
