"""The pictures that the documents show, each in light and dark: docs/pictures/NAME.png and
NAME-dark.png. A test that makes one compares the screen with it; with --renew it is made anew: look at
it before it is kept."""

import contextlib
import os
import pathlib
import random
import shutil
import sys

from PIL import Image, ImageDraw

import keyscript
import quarn

PICTURES = pathlib.Path(__file__).resolve().parent.parent.parent / "docs" / "pictures"
RENEW = "--renew" in sys.argv
# What readers see in paths. A test has a folder of its own, whose name takes as much room.
TEMPORARY = pathlib.Path("/tmp")
SHOWN_BASE = TEMPORARY / "handheld"
PICTURE_BYTES = 40000


class Page(quarn.Case):
    """A test that makes pictures in one theme."""

    display_options = {"window_manager": True}
    suffix = ""
    extras = {"Find": 1, "Status": 1}

    def document(self, name, seen, hole=(), again=None):
        """What is seen is the picture `name` of the documents, but for a rectangle (left, top, width,
        height) whose content is never the same. `again` brings it about once more if it does not
        last; it is called whenever nothing is seen of it."""
        name += self.suffix
        if again is not None:
            seen = Fleeting(seen, again)
        if RENEW:
            keyscript.renewed(seen, name, hole, PICTURES)
        else:
            keyscript.compare(seen, name, hole, PICTURES)

    def card(self):
        """A folder with the files that the pictures show."""
        base = made_base()
        self.addCleanup(shutil.rmtree, base)
        folder = base / "Card"
        make_card(folder)
        return folder

    def program_on(self, folder, second=None, **options):
        return self.program(folder, second or folder, extras=self.extras, **options)


class Fleeting:
    """A screen on which something is shown that does not last."""

    def __init__(self, seen, again):
        self.seen = seen
        self.again = again
        self.without = seen.wait_stable()

    def screenshot(self):
        picture = self.seen.screenshot()
        if picture is not None and picture.tobytes() == self.without.tobytes():
            self.again()
            with contextlib.suppress(quarn.Failure):
                quarn.wait_until(lambda: self.seen.screenshot().tobytes() != self.without.tobytes(),
                                 deadline=1)
            picture = self.seen.screenshot()
        return picture


def made_base():
    """A new folder. All digits are of one width."""
    while True:
        base = SHOWN_BASE if RENEW else TEMPORARY / f"{random.randrange(10 ** 8):08}"
        try:
            base.mkdir()
            return base
        except FileExistsError:
            if RENEW:
                raise


def in_both_themes(base):
    """Makes the tests of a page two classes of the module that defines it: in light and in dark."""
    module = sys.modules[base.__module__]
    name = base.__name__
    for theme, number, suffix in (("Light", 0, ""), ("Dark", 1, "-dark")):
        made = type(f"{name}{theme}", (base, ), {
            "suffix": suffix, "extras": {**base.extras, "Theme": number},
            "__module__": base.__module__})
        setattr(module, made.__name__, made)
    delattr(module, name)


def draw_landscape(path, sky, hill, sun):
    picture = Image.new("RGB", (480, 360), sky)
    draw = ImageDraw.Draw(picture)
    draw.ellipse((330, 40, 410, 120), fill=sun)
    draw.polygon([(0, 360), (0, 240), (150, 130), (330, 360)], fill=hill)
    draw.polygon([(200, 360), (360, 190), (480, 280), (480, 360)],
                 fill=tuple(shade * 3 // 4 for shade in hill))
    path.parent.mkdir(parents=True, exist_ok=True)
    picture.save(path, quality=95)
    os.truncate(path, PICTURE_BYTES)  # the same size whatever the encoder makes of it
    quarn.set_day(path, "2026-07-18")


def make_card(folder):
    lines = "".join(f"{number}. The road goes on past the mill and over the hill to the sea.\n"
                    for number in range(1, 41))
    quarn.make_file(folder / "Books" / "Atlas.pdf", b"x" * 90000, "2026-05-02")
    quarn.make_file(folder / "Music" / "Morning.mp3", b"x" * 3000, "2026-06-11")
    draw_landscape(folder / "Photos" / "beach.jpg", (150, 200, 240), (210, 180, 110), (255, 240, 170))
    quarn.make_file(folder / "Letter.txt", lines.encode(), "2026-10-30")
    draw_landscape(folder / "hills.jpg", (250, 200, 150), (90, 110, 60), (255, 120, 60))
    draw_landscape(folder / "sea.jpg", (120, 180, 240), (40, 90, 150), (255, 220, 60))
    quarn.make_file(folder / "tour.sh", b"#!/bin/sh\nfor stop in mill hill sea\ndo\n"
                    b"    echo \"next stop: $stop\"\ndone\n", "2026-09-01")
    for each in (folder / "Books", folder / "Music", folder / "Photos", folder):
        quarn.set_day(each, "2026-11-21")


def main():
    if RENEW:
        sys.argv.remove("--renew")
    quarn.main()
