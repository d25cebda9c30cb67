#!/usr/bin/python3
"""Finding entries by the keys of their first letters, and the status in the soft-key bar, on the staged
program."""

from PIL import ImageChops

import quarn

EXTRAS = {"Find": 1, "Status": 1}
NOTE_HEIGHT = 26
LETTER = 48
STATUS = (quarn.WIDTH // 2, 300, quarn.WIDTH, quarn.HEIGHT)
BRIGHT = 60  # of a pixel that belongs to a text of the bar


class Case(quarn.Case):
    def begin(self, *folders, extras=None, files=(), settings=None, **environment):
        """Starts a program whose first panel shows these folders and files."""
        program = self.program(settings={"Full_info": 0, **(settings or {})},
                               extras=EXTRAS if extras is None else extras)
        self.desk = quarn.make_folder(program.base / "desk")
        for name in folders:
            quarn.make_folder(self.desk / name)
        for name in files:
            quarn.make_file(self.desk / name)
        program.settings["Start_path_tab1"] = self.desk
        program.write_settings()
        self.program_ = program.start(**environment)
        self.presses = 0
        return program

    def press(self, *names):
        self.presses += len(names)
        self.program_.key(*names)

    def wait_opened(self, *names):
        """Opens the current entry, which must be the folder of this name."""
        self.press("select")
        self.program_.wait_for_listing(f"{self.desk}/{'/'.join(names)}")

    @staticmethod
    def size_of_difference(one, other):
        """Width and height of the part in which two pictures differ; (0, 0) if they are equal."""
        box = ImageChops.difference(one, other).getbbox()
        return (box[2] - box[0], box[3] - box[1]) if box else (0, 0)

    def wait_bubble(self, before, *keys):
        """Presses keys of the current row's name, again if the bubble is not seen: it does not last.
        Gives its width."""
        def width():
            size = self.size_of_difference(before, self.program_.screenshot())
            if size == (0, 0):
                self.press(*keys)
            return size[0] if size[1] == NOTE_HEIGHT else 0

        return quarn.wait_until(width, "the bubble")

    def wait_same(self, before):
        quarn.wait_until(lambda: self.program_.screenshot().tobytes() == before.tobytes(),
                         "the bubble to go")


class TestFinding(Case):
    def test_threePressesFindDocumentsOfTwoHundred(self):
        names = [f"{first}{second}{number}" for first in "ABCDEFGHIJ" for second in "aeiuy"
                 for number in range(4)]
        self.begin("Documents", *names[:199])
        self.press("3", "6", "2")
        self.assertEqual(self.presses, 3)
        self.wait_opened("Documents")

    def test_lettersOfAKeyboardFind(self):
        program = self.begin("Albums", "Downloads", "Music", "My Pictures")
        program.display.client.type("pic")
        self.wait_opened("My Pictures")

    def test_digitsAreTheLettersOfTheLanguage(self):
        self.begin("Документы", "Музыка", "Ёлка", settings={"Language": "russian"})
        self.press("5", "6", "3")
        self.wait_opened("Музыка")
        self.press("folderup")
        self.program_.wait_for_listing(f"{self.desk}/Музыка/..")
        self.press("3", "4")
        self.wait_opened("Ёлка")

    def test_theKeysOfAKeypadFindToo(self):
        self.begin("Albums", "Documents", QUARN_KEYPAD="1")
        self.press("3", "6", "2")
        self.wait_opened("Documents")

    def test_theSameKeyAgainGoesOn(self):
        self.begin("Albums", "Documents", "Downloads", "Empty")
        self.press("3", "3", "3")
        self.wait_opened("Empty")

    def test_theClearKeyEndsTheSearchOnly(self):
        program = self.begin("Albums", "Documents")
        self.press("3", "folderup")
        self.wait_opened("Documents")
        self.assertEqual(program.listings()[2:], [f"{self.desk}/Documents"])
        self.press("folderup")
        program.wait_for_listing(f"{self.desk}/Documents/..")

    def test_silenceEndsTheSearch(self):
        program = self.begin("Albums", "Documents", "data")
        before = program.wait_stable()
        self.press("3")
        program.wait_change(before)
        program.wait_idle(calm=2)
        # Not "d" and "a".
        self.press("2")
        self.wait_opened("Albums")

    def test_theBubbleComesAndGoes(self):
        program = self.begin("Albums", "Documents")
        before = program.wait_stable()
        self.press("3")
        program.wait_change(before)
        program.wait_idle(calm=2)
        before = program.wait_stable()
        found = self.wait_bubble(before, "3")
        self.wait_same(before)
        # What no name has is warned of with a sign.
        missing = self.wait_bubble(before, "3", "9")
        self.assertGreater(missing, found)
        self.wait_same(before)

    def test_aMenuAndOtherKeysEndTheSearch(self):
        program = self.begin("Albums", "Documents", "Empty")
        self.press("3", "softleft", "softright", "3", "down")
        self.wait_opened("Empty")
        self.press("folderup")
        program.wait_for_listing(f"{self.desk}/Empty/..")

    def test_digitsFindAgainBehindAMessage(self):
        program = self.begin("Albums", "Documents", files=["notes.txt"])
        self.press("6")
        program.with_modifier("9")
        # The message that there is no such plugin, and below it the box of the start.
        quarn.wait_until(program.shows_box, "the message")
        self.press("softright")
        quarn.wait_until(lambda: not program.shows_box(), "the boxes to go")
        self.press("3")
        self.wait_opened("Documents")

    def test_theHeldPageKeyShowsTheFirstLetter(self):
        program = self.begin(files=[f"file {number:03}" for number in range(100)])
        self.press(*["pagedown"] * 12)
        program.wait_idle(calm=2)  # longer than a letter stays
        end = program.wait_stable()
        program.keydown("pagedown")
        quarn.wait_until(lambda: self.size_of_difference(end, program.screenshot())
                         == (LETTER, LETTER), "the letter")
        program.keyup("pagedown")
        self.wait_same(end)

    def test_withoutTheExtraLettersAndDigitsDoNothing(self):
        program = self.begin("Albums", "Documents", extras={})
        before = program.wait_stable()
        self.press("3", "6", "2")
        program.display.client.type("doc")
        self.press("down")
        program.wait_change(before)
        self.wait_opened("Albums")


class TestStatus(Case):
    def status(self):
        """The picture of the bar's right, once the program has nothing to do."""
        return self.program_.wait_stable().crop(STATUS)

    @staticmethod
    def is_empty(picture):
        return picture.convert("L").getextrema()[1] < BRIGHT

    def test_itFollowsWhatIsDone(self):
        self.begin("Albums", "Documents", "Music")
        seen = [self.status()]
        for keys in (["down"], ["down"], ["0"], ["select"], ["softleft", "3", "1"], ["right"],
                     ["left", "softleft", "3", "2"]):
            self.press(*keys)
            seen.append(self.status())
        for picture in seen:
            self.assertFalse(self.is_empty(picture))
        self.assertEqual(len({picture.tobytes() for picture in seen}), len(seen))

    def test_itIsTheSameInTheSamePlace(self):
        self.begin("Albums", "Documents", "Music")
        self.press("down")
        first = self.status()
        self.press("down", "up")
        self.assertEqual(self.status().tobytes(), first.tobytes())
        self.press("right", "right")
        self.assertTrue(self.is_empty(self.status()))

    def test_thePasteEndsWhatIsNoted(self):
        program = self.begin("Albums", files=["a.txt"])
        self.press("down")
        plain = self.status()
        self.press("down", "softleft", "3", "1", "up")
        self.assertNotEqual(self.status().tobytes(), plain.tobytes())
        self.press("select")
        program.wait_for_listing(f"{self.desk}/Albums")
        start = len(program.lines)
        self.press("softleft", "3", "3")
        quarn.wait_until(lambda: len(program.listings(start)) >= 2, "both lists anew")
        program.wait_idle()
        self.press("folderup", "down")
        quarn.wait_until(lambda: self.status().tobytes() == plain.tobytes(), "the place")

    def test_openMenusHaveTheBarForThemselves(self):
        program = self.begin("Albums")
        place = self.status()
        self.press("softleft")
        menu = program.wait_stable()
        self.assertNotEqual(menu.crop(STATUS).tobytes(), place.tobytes())
        self.press("softright")
        quarn.wait_until(lambda: self.status().tobytes() == place.tobytes(), "the status")

    def test_withoutTheExtraTheRightOfTheBarIsEmpty(self):
        self.begin("Albums", "Documents", extras={"Find": 1})
        for keys in (["down"], ["0"], ["select"], ["softleft", "3", "1"]):
            self.press(*keys)
            self.assertTrue(self.is_empty(self.status()))


del Case  # it is no test itself

if __name__ == "__main__":
    quarn.main()
