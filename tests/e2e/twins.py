#!/usr/bin/python3
"""Entries whose names are no text, or odd ones, and beside each of them its twins: the entries that
it could be mistaken for."""

import os
import pathlib
import unicodedata

import operations

MARK = b"\xef\xbb\xbf"
NAMES = [b"\x80", b"a\xffb", b"\xc3", b"\xc0\xaf", b"\xed\xb2\x80", b"\xed\xa0\xbd\xed\xb8\x80",
         b"\xf4\x90\x80\x80", MARK, MARK + b"a", b"a" + MARK + b"b", MARK + MARK, b" a ", b"a\tb",
         b"-rf", b"*", b"~", "e\u0301".encode(), b"\xf0\x9f\x98\x80\x80", b"x" * 250 + b"\x80"]
FEW = [b"\x80", b"a\xffb", b"\xed\xb2\x80", MARK, MARK + b"a", b" a ", b"a\xe2\x82",
       b"\xe0\x80\xaf", b"\xf4\x90\x80\x80", "e\u0301".encode()]
LONGEST = 255


def twins_of(name):
    """What a name becomes by decoders that replace, drop or guess, and by a text that is changed."""
    text = name.decode(errors="replace")
    found = {text, name.decode(errors="ignore"), name.decode("latin-1"), text.replace("\ufffd", "?"),
             text.strip(), name.decode("utf-8-sig", errors="replace"), text.replace("\ufeff", ""),
             "\ufeff" + text, unicodedata.normalize("NFC", text),
             unicodedata.normalize("NFD", text)}
    twins = {twin.encode() for twin in found}
    twins.add(name.decode(errors="surrogateescape").encode(errors="surrogatepass"))
    return {twin for twin in twins
            if twin not in (b"", b".", b"..", name) and b"/" not in twin and len(twin) <= LONGEST}


def tree(top):
    """{path: (inode, mode, content or target)} of all entries below a folder, paths as bytes."""
    top = os.fsencode(top)
    entries = {}
    for folder, folders, files in os.walk(top):
        for name in folders + files:
            path = os.path.join(folder, name)
            info = os.lstat(path)
            content = None
            if os.path.islink(path):
                content = os.readlink(path)
            elif os.path.isfile(path):
                content = pathlib.Path(os.fsdecode(path)).read_bytes()
            entries[os.path.relpath(path, top)] = (info.st_ino, info.st_mode, content)
    return entries


def contents(entries):
    return {path: content for path, (_, _, content) in entries.items()}


class Case(operations.Case):
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.user.relist()  # of nothing: the highlight is at the top, wherever it was before

    def at(self, name, folder=None):
        return os.path.join(os.fsencode(folder or self.left), name)

    def write(self, path, content):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)

    def make(self, names, folders=False, twins_right=False):
        """The names and their twins in the left folder; as folders with a file of the same name."""
        for name in names:
            self.write(os.path.join(self.at(name), name) if folders else self.at(name),
                       b"odd " + name)
        for twin in set().union(*map(twins_of, names)) - set(names):
            self.write(self.at(twin), b"twin " + twin)
            if twins_right:
                self.write(self.at(twin, self.right), b"right twin " + twin)
        self.user.relist()

    @staticmethod
    def texts(names):
        return [os.fsdecode(name) for name in names]

    def check(self, expected, folder=None):
        """The entries are the expected ones, inodes included."""
        self.assertEqual(tree(folder or self.left), expected)
