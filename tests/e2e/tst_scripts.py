#!/usr/bin/python3
"""Plays every script of scripts/. With --renew the reference pictures are made anew: look at each
of them before they are kept."""

import os
import socket
import sys

from PIL import Image, ImageDraw

import keyscript
import quarn

RENEW = "--renew" in sys.argv


def make_picture(path, width, height):
    picture = Image.new("RGB", (width, height), (60, 120, 200))
    draw = ImageDraw.Draw(picture)
    draw.rectangle((0, height * 2 // 3, width, height), fill=(40, 150, 60))
    draw.ellipse((width // 8, height // 8, width // 3, height // 2), fill=(255, 210, 40))
    path.parent.mkdir(parents=True, exist_ok=True)
    picture.save(path)
    os.truncate(path, 4096)  # the same size whatever the encoder makes of it
    quarn.set_day(path, "2009-07-01")


def make_tree(tree):
    """The folder that the pictures show: every kind of entry, names of all lengths, fixed days."""
    for name in ("Music", "docs", "Ордер"):
        quarn.make_folder(tree / name)
    for number in range(40):
        quarn.make_file(tree / "long" / f"track {number:02}.mp3", b"x" * (1024 * number))
    quarn.make_file(tree / "docs" / "deep" / "deeper" / "note.txt", b"note\n")
    quarn.make_file(tree / ".profile", b"x" * 1023)
    quarn.make_file(tree / "README", b"x" * 1536)
    quarn.make_file(tree / "a name that is far too long for one row of the screen.txt", b"x" * 512)
    quarn.make_file(tree / "song.mp3", b"")
    os.truncate(tree / "song.mp3", 5000000)
    quarn.set_day(tree / "song.mp3", "2026-11-21")
    make_picture(tree / "wide.png", 64, 48)
    make_picture(tree / "high.jpg", 48, 64)
    quarn.make_file(tree / "broken.png", b"no picture")
    (tree / "link to docs").symlink_to("docs")
    (tree / "link to song").symlink_to("song.mp3")
    (tree / "dangling").symlink_to("nowhere")
    quarn.set_day(tree / "dangling", "2008-03-05")
    make_socket(tree / "socket")
    for folder in (tree / "docs" / "deep" / "deeper", tree / "docs" / "deep", tree / "docs",
                   tree / "long", tree):
        quarn.set_day(folder, "2008-12-25")


def make_socket(path):
    """A device-like entry. Bound by a short name: a socket's path is limited."""
    here = os.getcwd()
    os.chdir(path.parent)
    with socket.socket(socket.AF_UNIX) as made:
        made.bind(path.name)
    os.chdir(here)
    quarn.set_day(path, "2008-03-05")


class TestScripts(quarn.Case):
    pass


def add_test(path):
    def test(self):
        keyscript.Script(path, self.display, make_tree, RENEW).play()

    setattr(TestScripts, f"test_{path.stem}", test)


for script in sorted((keyscript.FOLDER / "scripts").glob("*.keys")):
    add_test(script)

if __name__ == "__main__":
    if RENEW:
        sys.argv.remove("--renew")
    quarn.main()
