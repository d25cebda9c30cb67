#!/usr/bin/python3
"""Copies a TrueType font under another family name: name_font.py SOURCE TARGET FAMILY.

With a name of its own the program's font cannot be mixed up with faces of its origin that a system
may have installed, and looks the same everywhere. The tables are those of the OpenType format.
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
    for number in (FAMILY, UNIQUE_ID, FULL_NAME, POSTSCRIPT_NAME):
        names[number] = family.encode("utf-16-be")
    names[STYLE] = "Regular".encode("utf-16-be")
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


def with_number(table, form, offset, number):
    changed = bytearray(table)
    struct.pack_into(form, changed, offset, number)
    return bytes(changed)


def main(source, target, family):
    with open(source, "rb") as file:
        font = file.read()
    tables = read_tables(font)
    tables.pop(b"DSIG", None)  # would not fit any more
    tables[b"name"] = make_names(read_names(tables[b"name"]), family)
    # A width class of its own would make the toolkit look for a normal one elsewhere.
    tables[b"OS/2"] = with_number(tables[b"OS/2"], ">H", WIDTH_CLASS_OFFSET, NORMAL_WIDTH)
    tables[b"head"] = with_number(tables[b"head"], ">L", ADJUSTMENT_OFFSET, 0)
    whole, offsets = assemble(font[:4], tables)
    struct.pack_into(">L", whole, offsets[b"head"] + ADJUSTMENT_OFFSET,
                     (ADJUSTMENT_MAGIC - checksum(whole)) & 0xFFFFFFFF)
    with open(target, "wb") as file:
        file.write(whole)


if __name__ == "__main__":
    main(*sys.argv[1:])
