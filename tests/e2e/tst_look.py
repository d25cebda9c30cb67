#!/usr/bin/python3
"""What the program looks like in light and dark and at larger scales, and how it shows what is too
long for the screen. With --renew the reference pictures are made anew: look at each of them before
they are kept."""

import itertools
import struct
import sys

import album
import operations
import quarn
import safescenes
import tst_scripts

RENEW = "--renew" in sys.argv

THEMES = ("light", "dark")
SCALES = (1, 2, 3)
# Under what name a picture is kept, and the keys that lead there from the picture before.
PICTURES = (("list", ["down", "down"]), ("menu", ["softleft", "down", "down", "right", "down"]),
            ("dialog", ["softright", "softright", "softleft", "4"]))
# Where the cursor behind the name blinks.
CURSOR = 36, 148, 20, 22
LIGHT_GROUND, DARK_GROUND = (255, 255, 255), (16, 17, 20)


class Case(quarn.Case):
    display_options = {"width": quarn.WIDTH * 3 + 60, "height": quarn.HEIGHT * 3 + 80}

    def begin(self, tree, extras=None, scale=1, make_tree=tst_scripts.make_tree, **environment):
        """Starts a program whose panels show a folder in its own base; gives both."""
        program = self.program(extras=extras)
        folder = program.base / tree
        make_tree(folder)
        program.settings.update({"Start_path_tab1": folder, "Start_path_tab2": folder})
        program.write_settings()
        program.start(QUARN_SCALE=str(scale), **environment)
        return program, folder


class TestPictures(Case):
    """The list, its menus and the dialog for names."""


def add_pictures(theme, scale):
    def test(self):
        program, _ = self.begin("tree", {"Theme": THEMES.index(theme)}, scale)
        for name, keys in PICTURES:
            program.key(*keys)
            hole = [tuple(scale * length for length in CURSOR)] if name == "dialog" else []
            operations.View(program, *hole).check(f"look_{name}_{theme}_{scale}", RENEW)

    setattr(TestPictures, f"test_{theme}AtScale{scale}", test)


for each in itertools.product(THEMES, SCALES):
    add_pictures(*each)


class TestStagedPictures(Case):
    """What the staged settings switch on, and the sheet of symbols of a keypad."""


def add_staged_pictures(theme, scale):
    def test(self):
        extras = {"Find": 1, "Status": 1, "Theme": THEMES.index(theme)}
        program, _ = self.begin("tree", extras, scale, QUARN_KEYPAD="1")

        def check(name, seen, *holes):
            scaled = [tuple(scale * length for length in hole) for hole in holes]
            operations.View(seen, *scaled).check(f"look_{name}_{theme}_{scale}", RENEW)

        program.key("down", "down")
        check("staged", program)
        # It is the current row that is found.
        check("bubble", album.Fleeting(program, lambda: program.key("3", "6")))
        program.wait_idle(calm=2)
        program.key("softleft", "4", "star")
        check("sheet", program, CURSOR)

    setattr(TestStagedPictures, f"test_{theme}AtScale{scale}", test)


for each in (("light", 1), ("dark", 1), ("dark", 2), ("dark", 3)):
    add_staged_pictures(*each)


class TestSafePictures(Case):
    """The pages of safe operations and the trash."""


def add_safe_pictures(theme, scale):
    def test(self):
        program = self.program(extras={**safescenes.EXTRAS, "Theme": THEMES.index(theme)})
        left, right = (quarn.make_folder(program.base / side) for side in ("left", "right"))
        program.settings.update({"Start_path_tab1": left, "Start_path_tab2": right})
        program.write_settings()
        scenes = safescenes.Scenes(program, left, right)
        program.start(QUARN_SCALE=str(scale))

        def check(name, *holes):
            scaled = [tuple(scale * length for length in hole) for hole in holes]
            operations.View(program, *scaled).check(f"look_{name}_{theme}_{scale}", RENEW)

        for name in ("question", "failures", "progress", "trash"):
            getattr(scenes, f"show_{name}")(lambda *holes, name=name: check(name, *holes))

    setattr(TestSafePictures, f"test_{theme}AtScale{scale}", test)


for each in itertools.product(THEMES, (1, 2)):
    add_safe_pictures(*each)


class TestThemes(Case):
    def ground(self, theme):
        program, _ = self.begin("tree", {} if theme is None else {"Theme": theme})
        return program.wait_stable().getpixel((200, 90)), program.lines

    def test_withoutTheKeyItIsLight(self):
        self.assertEqual(self.ground(None)[0], LIGHT_GROUND)

    def test_nonsenseIsLightAndNamed(self):
        ground, lines = self.ground("purple")
        self.assertEqual(ground, LIGHT_GROUND)
        self.assertTrue([line for line in lines if "Theme" in line and "purple" in line], lines)

    def test_oneIsDark(self):
        self.assertEqual(self.ground(1)[0], DARK_GROUND)


def without_letters(font):
    """A font whose lists of characters are of a kind that there is not."""
    font = bytearray(font)
    count, = struct.unpack_from(">H", font, 4)
    tables = {bytes(font[at:at + 4]): struct.unpack_from(">L", font, at + 8)[0]
              for at in range(12, 12 + 16 * count, 16)}
    letters = tables[b"cmap"]
    for number in range(struct.unpack_from(">H", font, letters + 2)[0]):
        each, = struct.unpack_from(">L", font, letters + 8 + 8 * number)
        struct.pack_into(">H", font, letters + each, 99)
    return bytes(font)


class TestOddFonts(Case):
    """Whatever the font's files hold, rows, menus and boxes say something."""

    def check(self, change):
        program = self.program()
        tst_scripts.make_tree(program.base / "tree")
        program.settings["Start_path_tab1"] = program.base / "tree"
        program.write_settings()
        for name in ("font.ttf", "font-bold.ttf"):
            path = program.stage / "res" / name
            font = path.read_bytes()
            path.unlink()
            change(path, font)
        program.start()
        listing = program.wait_stable()
        # In the row below the highlighted one a name stands beside the icon.
        self.assertGreater(len(set(listing.crop((45, 76, 120, 104)).getdata())), 4)
        program.key("down", "softleft")
        menu = program.wait_change(listing)
        self.assertGreater(len(set(menu.crop((40, 190, 120, 210)).getdata())), 4)
        program.key("8")
        quarn.wait_until(program.shows_box, "the properties")
        program.key("softright")
        quarn.wait_until(lambda: not program.shows_box(), "the box to go")
        program.key("hash")
        program.wait_for_listing(program.settings["Start_path_tab1"])

    def test_lettersAreMissing(self):
        self.check(lambda path, font: path.write_bytes(without_letters(font)))

    def test_filesAreCut(self):
        self.check(lambda path, font: path.write_bytes(font[:len(font) // 3]))

    def test_filesAreMissing(self):
        self.check(lambda path, font: None)


class TestHighBox(Case):
    """The properties of an entry far down in folders with long names."""

    def properties(self):
        def make_tree(tree):
            for name in "abcd":
                tree = tree / (name * 240)
            quarn.make_file(tree / f"{'e' * 230}.txt", b"x")
            self.folder = tree

        program, folder = self.begin("tree", make_tree=make_tree)
        for name in "abcd":
            folder = folder / (name * 240)
            program.key("down", "select")
            program.wait_for_listing(folder)
        program.key("down", *operations.COMMANDS["properties"])
        quarn.wait_until(lambda: self.is_shown(program), "the box")
        return program

    @staticmethod
    def is_shown(program):
        """Whether a box goes over the whole height, by its left outline beside the list's ground."""
        picture = program.screenshot()
        return set(picture.crop((10, 0, 11, quarn.HEIGHT)).getdata()) == {(0, 0, 0)} \
            and picture.getpixel((12, 200)) == (255, 255, 255)

    def test_itIsShownFromItsTopAndPannedToItsEnd(self):
        program = self.properties()
        top = program.wait_stable()
        # The title's ground, and no outline of the block that ends below the screen.
        self.assertEqual(top.getpixel((11, 10)), (0, 0, 0))
        self.assertNotEqual(top.getpixel((20, 319)), (0, 0, 0))
        program.key("down")
        panned = program.wait_change(top)
        self.assertEqual(panned.crop((10, 100, 225, 200)).tobytes(),
                         top.crop((10, 140, 225, 240)).tobytes())
        program.key(*["down"] * 40)
        end = program.wait_change(panned)
        self.assertEqual(set(end.crop((10, 319, 230, 320)).getdata()), {(0, 0, 0)})
        program.key(*["up"] * 45)
        quarn.wait_until(lambda: program.wait_stable().tobytes() == top.tobytes(), "the top again")

    def test_otherKeysCloseItWhereverItIs(self):
        program = self.properties()
        program.key("down", "select")
        quarn.wait_until(lambda: not self.is_shown(program), "the box to go")
        # The list has its keys again.
        program.key("folderup")
        program.wait_for_listing(f"{self.folder}/..")


class TestMotion(Case):
    """A name that is too long for its row is shown whole."""

    def long_name(self, extras):
        def make_tree(tree):
            quarn.make_file(tree / f"{'a name that is too long for its row ' * 2}.txt", b"x")

        program, _ = self.begin("tree", extras, make_tree=make_tree)
        before = program.wait_stable()
        program.key("down")
        return program, program.wait_change(before)

    def test_itGlidesTwiceAndRests(self):
        program, resting = self.long_name({"Motion": 1})
        seen, last = 0, True
        while seen < 4:  # away and back, twice
            quarn.wait_until(
                lambda: (program.screenshot().tobytes() == resting.tobytes()) != last, "the glide")
            seen, last = seen + 1, not last
        program.wait_idle(calm=1.5)
        self.assertEqual(program.screenshot().tobytes(), resting.tobytes())

    def test_withoutMotionNothingMoves(self):
        program, resting = self.long_name(None)
        program.wait_idle(calm=1.5)
        self.assertEqual(program.screenshot().tobytes(), resting.tobytes())

    def test_menuThatRisesAnswersAtOnce(self):
        program, _ = self.long_name({"Motion": 1})
        program.key("softleft", "4")
        user = operations.User(program, program.home, "/")
        quarn.wait_until(user.is_typing, "the dialog for names")


if __name__ == "__main__":
    if RENEW:
        sys.argv.remove("--renew")
    quarn.main()
