"""Plays key scripts: text files of keys, with what must be seen after them.

    setting KEY VALUE           a line of fm.cfg; before everything else
    early                       do not wait until the start box is gone; before everything else
    key NAME...                 presses phone keys one after the other
    hold NAME / release NAME    presses a key, lets it go
    click X Y                   at a point of the 240 x 320 screen
    assert line TEXT            a debug line since the last key
    assert listing PATH         a listing of that folder since the last key
    refute line TEXT            no such debug line since the last key, once the program is at rest
    snapshot NAME [X Y W H]     the screen looks like reference/NAME.png; the rectangle, where
                                something moves, is left out

$TREE is the folder that the first panel shows at the start, $HOME the program's home."""

import os
import pathlib
import shlex
import time

from PIL import Image, ImageChops

import quarn

FOLDER = pathlib.Path(__file__).resolve().parent
REFERENCE = FOLDER / "reference"
SHADE = 16       # of 255: by so much a channel of a pixel may differ
PIXELS = 0.0003  # this share of the pixels may differ by more (23 of the screen's)
CALM = 1.0       # seconds without a change after which a picture is taken as a reference


class Script:
    """One script on one program. Renewing writes a reference the first time that it is named, and
    compares with it from then on."""

    renewed_names = set()

    def __init__(self, path, display, make_tree, renew=False):
        self.path = path
        self.display = display
        self.make_tree = make_tree
        self.renew = renew
        self.program = None

    def play(self):
        steps = [(number, shlex.split(line, comments=True))
                 for number, line in enumerate(self.path.read_text().splitlines(), 1)]
        steps = [(number, words) for number, words in steps if words]
        settings = {words[1]: words[2] for _, words in steps if words[0] == "setting"}
        self.program = quarn.Program(self.display, settings=settings)
        try:
            self.tree = self.program.base / "tree"
            self.make_tree(self.tree)
            self.program.settings.update(
                {"Start_path_tab1": self.tree, "Start_path_tab2": self.tree / "docs", **settings})
            self.program.write_settings()
            self.program.start(wait=not any(words[0] == "early" for _, words in steps))
            for number, words in steps:
                self.step(number, words)
        finally:
            self.program.stop()

    def step(self, number, words):
        words = [word.replace("$TREE", str(self.tree)).replace("$HOME", str(self.program.home))
                 for word in words]
        action = getattr(self, f"do_{words[0]}", None)
        try:
            if action is None:
                raise quarn.Failure(f"unknown: {words[0]}")
            action(*words[1:])
        except quarn.Failure as failure:
            raise quarn.Failure(f"{self.path}:{number}: {failure}") from failure

    def do_setting(self, key, value):
        """Done before the start."""

    def do_early(self):
        """Done at the start."""

    def do_key(self, *names):
        self.program.key(*names)

    def do_hold(self, name):
        self.program.keydown(name)

    def do_release(self, name):
        self.program.keyup(name)

    def do_click(self, x, y):
        self.program.click(int(x), int(y))

    def do_assert(self, what, text):
        if what == "listing":
            self.program.wait_for_listing(text)
        elif what == "line":
            self.program.wait_for_line(text, self.program.mark)
        else:
            raise quarn.Failure(f"unknown: assert {what}")

    def do_refute(self, what, text):
        if what != "line":
            raise quarn.Failure(f"unknown: refute {what}")
        self.program.wait_idle()
        if text in self.program.lines[self.program.mark:]:
            raise quarn.Failure(f"there is a line {text!r}")

    def do_snapshot(self, name, *moving):
        box = tuple(int(number) for number in moving)
        if self.renew and name not in self.renewed_names:
            self.renewed_names.add(name)
            renewed(self.program, name, box)
        else:
            compare(self.program, name, box)


def masked(picture, box):
    """The picture with a rectangle (left, top, width, height) blackened; empty for none."""
    result = picture.copy()
    if box:
        left, top, width, height = box
        result.paste((0, 0, 0), (left, top, left + width, top + height))
    return result


def difference(picture, reference, box=()):
    """The number of pixels that differ by more than is allowed, and a picture of them."""
    if picture.size != reference.size:
        return picture.width * picture.height, reference
    apart = ImageChops.difference(masked(picture, box), masked(reference, box))
    red, green, blue = apart.split()
    worst = ImageChops.lighter(ImageChops.lighter(red, green), blue)
    marks = worst.point(lambda shade: 255 if shade > SHADE else 0)
    return marks.histogram()[255], marks


def compare(program, name, box, folder=REFERENCE):
    """Waits until the screen looks like the reference. If it never does, the last picture and the
    differing pixels are written to the folder of references."""
    path = folder / f"{name}.png"
    if not path.exists():
        raise quarn.Failure(f"no reference {path}; make it with --renew")
    reference = Image.open(path).convert("RGB")
    allowed = int(reference.width * reference.height * PIXELS)
    seen = [None, None, 0]

    def alike():
        picture = program.screenshot()
        if picture is None:
            return False
        count, marks = difference(picture, reference, box)
        seen[:] = [picture, marks, count]
        return count <= allowed

    actual, apart = REFERENCE / f"{name}.actual.png", REFERENCE / f"{name}.difference.png"
    try:
        quarn.wait_until(alike, lambda: f"the screen to look like {path}: {seen[2]} pixels differ, "
                         f"see {actual.name} and {apart.name}")
    except quarn.Failure:
        if seen[0] is not None:
            seen[0].save(actual)
            seen[1].save(apart)
        raise
    for path in (actual, apart):
        path.unlink(missing_ok=True)


def renewed(program, name, box, folder=REFERENCE):
    """Writes the reference as soon as the screen has not changed for a while."""
    last, since = None, time.monotonic()
    calm = CALM if not box else CALM / 3

    def settled():
        nonlocal last, since
        picture = program.screenshot()
        if picture is None or last is None \
                or masked(picture, box).tobytes() != masked(last, box).tobytes():
            since = time.monotonic()
        last = picture
        return time.monotonic() - since > calm

    quarn.wait_until(settled, "a picture that stays the same")
    folder.mkdir(exist_ok=True)
    last.save(folder / f"{name}.png", optimize=True)
    print(f"renewed {os.path.relpath(folder / name)}.png", flush=True)
