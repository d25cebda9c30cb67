#!/usr/bin/python3
"""Names typed with twelve keys, on the staged program. With --renew the reference pictures are made
anew: look at each of them before they are kept."""

import os
import sys

from Xlib import X

import operations
import quarn

RENEW = "--renew" in sys.argv

# Keys that only keypads have: their numbers here, and what they are to the display.
SELECT = 240, 0x1008ffa0
OWN_DIGITS = {241: 0x10081202, 242: 0x10081203}  # 2 and 3


# Parts of the field in the screen: where the first letter reaches below the line, and where the text
# is without the cursor of an empty field.
BELOW_FIRST_LETTER = (14, 165, 19, 168)
TEXT = (13, 152, 180, 168)


class Thumb:
    """Presses keys and counts them. In a row of keys ">" is Right, "<" Left, "c" the clear key."""

    names = {">": "right", "<": "left", "c": "folderup", "*": "star", "#": "hash"}

    def __init__(self, program):
        self.program = program
        self.presses = 0

    def key(self, *names):
        self.presses += len(names)
        self.program.key(*names)

    def row(self, keys):
        self.key(*[self.names.get(key, key) for key in keys])


class Case(quarn.Case):
    def begin(self, *files, settings=None, keymap=None, **environment):
        """Starts a program with these files in its first panel."""
        program = self.program(settings={"Full_info": 0, **(settings or {})})
        self.desk = quarn.make_folder(program.base / "desk")
        for name in files:
            quarn.make_file(self.desk / name)
        program.settings["Start_path_tab1"] = self.desk
        program.write_settings()
        if keymap is not None:
            (program.stage / "keymap.cfg").write_text(keymap)
        program.start(**environment)
        self.user = operations.User(program, self.desk, "/")
        self.thumb = Thumb(program)
        return program

    def open_dialog(self, command):
        self.thumb.key(*operations.COMMANDS[command])
        quarn.wait_until(self.user.is_typing, "the dialog for a name")

    def confirm(self):
        self.thumb.key("softleft")
        quarn.wait_until(lambda: not self.user.is_typing(), "the dialog to go")

    def make_folder_by(self, *rows):
        """Makes a folder whose name the rows of keys write."""
        self.open_dialog("new folder")
        for row in rows:
            self.thumb.row(row)
        self.confirm()

    def wait_names(self, *expected):
        quarn.wait_until(lambda: sorted(os.listdir(self.desk)) == sorted(expected),
                         lambda: f"{expected}; got {os.listdir(self.desk)}")


class TestPresses(Case):
    """What a rename takes from the list to the renamed file, in presses."""

    def rename(self, old, new, *rows, presses):
        self.begin(old, QUARN_KEYPAD="1")
        self.thumb.key("down")
        self.open_dialog("rename")
        for row in rows:
            self.thumb.row(row)
        self.confirm()
        self.wait_names(new)
        self.assertEqual(self.thumb.presses, presses)

    def test_aWholeNameIsReplaced(self):
        # To the dialog 6, six letters and a dot 13, the answer 1.
        self.rename("img_0001", "dad.jpg", "32>3", "1", "574", presses=6 + 8 + 1)

    def test_theNameBeforeTheExtensionIsReplaced(self):
        # The first Left leads before the extension, where the clear key takes away what was there.
        self.rename("notes.txt", "mai.txt", "<", "ccccc", "6>2444", presses=6 + 1 + 5 + 6 + 1)

    def test_aNumberIsPutBehindTheName(self):
        self.rename("day.txt", "day_2.txt", "<", "*4", "2222", presses=6 + 1 + 2 + 4 + 1)


class TestTyping(Case):
    def setUp(self):
        super().setUp()
        # A busy program cannot tell the display's repeats of a held key from presses.
        connection = self.display.client.connection
        connection.change_keyboard_control(auto_repeat_mode=X.AutoRepeatModeOff)
        connection.sync()

    def test_modesGoRoundAndSymbolsComeFromTheSheet(self):
        self.begin(QUARN_KEYPAD="1")
        self.make_folder_by("#2>2", "#3>3", "#45", "#6", "*3", "**1")
        self.wait_names("AaDD45m-@")

    def test_aHeldDigitWritesItself(self):
        program = self.begin(QUARN_KEYPAD="1")
        self.open_dialog("new folder")
        # The letter that comes first reaches below the line, and is underlined there.
        program.keydown("7")
        quarn.wait_until(lambda: not self.is_empty(program)
                         and not self.has_ink(program, BELOW_FIRST_LETTER), "the digit")
        program.keyup("7")
        self.thumb.row("2")
        self.confirm()
        self.wait_names("7a")

    def test_theHeldClearKeyEmptiesTheField(self):
        for environment in ({"QUARN_KEYPAD": "1"}, {}):
            with self.subTest(environment):
                program = self.begin("notes.txt", **environment)
                self.thumb.key("down")
                self.open_dialog("rename")
                program.key("right")
                program.keydown("folderup")
                quarn.wait_until(lambda: self.is_empty(program), "the field to be empty")
                program.keyup("folderup")
                program.display.client.type("a")
                self.confirm()
                self.wait_names("a")
                program.stop()

    @staticmethod
    def is_empty(program):
        """Whether the field has nothing but a cursor, which may be there at the moment or not."""
        text = program.screenshot().crop(TEXT)
        ground = text.getpixel((text.width - 1, 0))
        inked = [x for x in range(text.width)
                 if set(text.crop((x, 0, x + 1, text.height)).getdata()) != {ground}]
        return len(inked) <= 2

    @staticmethod
    def has_ink(program, part):
        """Whether something is drawn on the ground of a part of the field."""
        return len(set(program.screenshot().crop(part).getdata())) > 1

    def test_lettersAreThoseOfTheLanguage(self):
        self.begin(settings={"Language": "russian"}, QUARN_KEYPAD="1")
        self.make_folder_by("666>33>666>6")
        self.wait_names("тетр")

    def test_theMenuPastesAtTheCursor(self):
        program = self.begin("a", QUARN_KEYPAD="1")
        self.thumb.key("down")
        self.open_dialog("rename")
        program.key("modifier", "select", "right", "2", "modifier", "down", "select")
        self.confirm()
        self.wait_names("aaa")

    def test_aKeyboardTypesAsEver(self):
        program = self.begin()
        self.open_dialog("new folder")
        program.display.client.type("22*#x")
        self.confirm()
        self.wait_names("22*#x")


class TestWhoHasAKeypad(Case):
    def test_theFileOfKeysSaysIt(self):
        self.begin(keymap="Keypad = 1\n")
        self.make_folder_by("22")
        self.wait_names("b")

    def test_nonsenseIsNamedAndNone(self):
        program = self.begin(keymap="Keypad = often\n", QUARN_KEYPAD="2")
        self.assertTrue(any("keymap.cfg:1" in line for line in program.lines), program.lines)
        self.assertTrue(any(line.startswith("QUARN_KEYPAD: ") for line in program.lines),
                        program.lines)
        self.make_folder_by("22")
        self.wait_names("22")

    def test_aKeyThatOnlyKeypadsHaveSaysIt(self):
        self.add_keys({SELECT[0]: SELECT[1]})
        program = self.begin()
        self.open_dialog("new folder")
        self.press(program, SELECT[0])
        self.thumb.row("22")
        self.confirm()
        self.wait_names("b")

    def test_aKeypadsOwnDigitsSayItThemselves(self):
        self.add_keys(OWN_DIGITS)
        program = self.begin()
        self.open_dialog("new folder")
        for code in OWN_DIGITS:
            self.press(program, code)
        self.confirm()
        self.wait_names("ad")

    def add_keys(self, keys):
        """Before the program asks for the keys that there are: {code: symbol}."""
        connection = self.display.client.connection
        for code, symbol in keys.items():
            connection.change_keyboard_mapping(code, [[symbol]])
        connection.sync()

    @staticmethod
    def press(program, code):
        program.display.client.down(code)
        program.display.client.up(code)
        program.display.client.connection.sync()


class TestLook(Case):
    # The cursor in the field blinks.
    FIELD_END = (62, 148, 60, 24)

    def check(self, program, name, *holes):
        operations.View(program, *holes).check(name, RENEW)

    def test_badgeAndSheetOfSymbols(self):
        program = self.begin("notes.txt", QUARN_KEYPAD="1")
        self.thumb.key("down")
        self.open_dialog("rename")
        self.check(program, "typing_badge", self.FIELD_END)
        self.thumb.row("##")
        self.check(program, "typing_badge_capitals", self.FIELD_END)
        self.thumb.row("*")
        self.check(program, "typing_symbols", self.FIELD_END)
        self.thumb.row("*68")
        program.key("folderup")


del Case  # it is no test itself

if __name__ == "__main__":
    if RENEW:
        sys.argv.remove("--renew")
    quarn.main()
