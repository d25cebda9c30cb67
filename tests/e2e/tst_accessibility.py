#!/usr/bin/python3
"""What a program that reads the screen to its user gets from the staged program, and can do in it."""

import functools
import shutil

from PIL import Image, ImageChops

import operations
import quarn
import screenreader
from screenreader import act, actions, children, is_in, walk

from gi.repository import Atspi, GLib

EXTRAS = {"Find": 1, "Status": 1}
MANY = 20000
MANY_SMALL = 600  # files that are flushed in some parts


HIGHLIGHT = (255, 230, 214)


def highlight_in(picture):
    """(left, top, right, bottom) of the highlighted row, by its ground and the bar at its left."""
    apart = ImageChops.difference(picture, Image.new("RGB", picture.size, HIGHLIGHT)).split()
    same = functools.reduce(ImageChops.lighter, apart).point(lambda value: 0 if value else 255)
    left, top, right, bottom = same.getbbox()
    return 0, top, right, bottom


class Test(quarn.Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.buses = screenreader.Buses(cls.display)
        cls.addClassCleanup(cls.buses.stop)
        cls.reader = screenreader.Reader(cls.buses)
        cls.reader.listen("object:state-changed", "object:property-change",
                          "object:property-change:accessible-value")

    def begin(self, *names, second_folder="/", display=None, scale="1", extras=None, prepare=None,
              **settings):
        program = quarn.Program(display or self.display, extras=extras or EXTRAS,
                                settings=settings, second_folder=second_folder)
        self.addCleanup(program.stop)
        self.desk = quarn.make_folder(program.base / "desk")
        for name in names:
            if name.endswith("/"):
                quarn.make_folder(self.desk / name)
            else:
                quarn.make_file(self.desk / name, b"12345")
        program.settings["Start_path_tab1"] = self.desk
        program.write_settings()
        if prepare is not None:
            prepare(program)
        program.start(**self.buses.environment, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                      QUARN_SCALE=scale)
        self.app = quarn.wait_until(lambda: self.reader.application(program.pid()),
                                    "the program on the bus")
        self.reader.forget()
        self.program_ = program
        return program

    def begin_safe(self, *names, prepare=None):
        """One whose second tab shows an empty folder, with safe operations and the trash."""
        self.other = self.scratch()
        return self.begin(*names, second_folder=self.other, extras={"Safe": 1, "Trash": 1},
                          prepare=prepare)

    def copy_to_other(self, row):
        program = self.program_
        program.key(*["down"] * row, *operations.COMMANDS["copy"], "right",
                    *operations.COMMANDS["paste"])

    def find(self, role, name=None, start=None):
        """The first that is seen of this role and name."""
        def search():
            self.reader.look()
            try:
                return next((node for node in walk(start or self.app)
                             if node.get_role() == role and name in (None, node.get_name())), None)
            except GLib.Error:
                return None  # what was looked at has just gone

        return quarn.wait_until(search, lambda: f"a {role.value_nick} {name!r} among "
                                f"{[(n.get_role_name(), n.get_name()) for n in walk(self.app)]}")

    def wait_names(self, parent, names):
        quarn.wait_until(lambda: [node.get_name() for node in children(parent)] == names,
                         lambda: f"{names}; got {[n.get_name() for n in children(parent)]}")

    def wait_heard(self, kind, name):
        quarn.wait_until(lambda: self.reader.heard(kind, name),
                         lambda: f"{kind} of {name!r} among {self.reader.events}")

    def test_rowsAreReadWithWhatTheyAre(self):
        self.begin("Albums/", "a.txt")
        rows = self.find(Atspi.Role.LIST, "desk")
        self.wait_names(rows, ["..", "Albums", "a.txt"])
        self.assertEqual({row.get_role() for row in children(rows)}, {Atspi.Role.LIST_ITEM})
        last = rows.get_child_at_index(2)
        self.assertEqual(last.get_description(), "5 b 05/03/2008")
        self.assertEqual(last.get_index_in_parent(), 2)
        self.assertTrue(is_in(rows.get_child_at_index(0), Atspi.StateType.SELECTED))
        self.assertFalse(is_in(last, Atspi.StateType.SELECTED))

    def test_movingIsToldRowByRow(self):
        program = self.begin("Albums/", "a.txt")
        program.key("down")
        self.wait_heard("object:state-changed:focused", "Albums")
        self.wait_heard("object:state-changed:selected", "Albums")
        self.wait_heard("object:property-change:accessible-name", "desk, 1/2")

    def test_pressOnARowOpensAFolder(self):
        program = self.begin("Albums/", "Albums/inside.txt")
        rows = self.find(Atspi.Role.LIST, "desk")
        act(rows.get_child_at_index(1), "Press")
        program.wait_for_listing(self.desk / "Albums")
        self.wait_names(self.find(Atspi.Role.LIST, "Albums"), ["..", "inside.txt"])

    def test_checkBoxesAreToggled(self):
        program = self.begin("a.txt", "b.txt")
        program.key("0")
        rows = self.find(Atspi.Role.LIST, "desk")
        quarn.wait_until(lambda: "Toggle" in actions(rows.get_child_at_index(2)),
                         "rows with check boxes")
        # In this mode there is no way back.
        self.assertFalse(is_in(rows.get_child_at_index(0), Atspi.StateType.SENSITIVE))
        act(rows.get_child_at_index(2), "Toggle")
        quarn.wait_until(lambda: is_in(rows.get_child_at_index(2), Atspi.StateType.CHECKED),
                         "a checked row")
        self.assertFalse(is_in(rows.get_child_at_index(1), Atspi.StateType.CHECKED))

    def test_tabsAreTurnedTo(self):
        program = self.begin("a.txt")
        tabs = self.find(Atspi.Role.PAGE_TAB_LIST)
        self.wait_names(tabs, ["desk", "/", "Quarn 1.6"])
        self.assertTrue(is_in(tabs.get_child_at_index(0), Atspi.StateType.SELECTED))
        program.key("right")
        quarn.wait_until(lambda: is_in(tabs.get_child_at_index(1), Atspi.StateType.SELECTED),
                         "the second tab")
        act(tabs.get_child_at_index(2), "Press")
        quarn.wait_until(lambda: is_in(tabs.get_child_at_index(2), Atspi.StateType.SELECTED),
                         "the third tab")
        self.assertFalse(is_in(tabs.get_child_at_index(0), Atspi.StateType.SELECTED))

    def test_wholeWayThroughMenusToAnAnsweredQuestion(self):
        self.begin("Albums/")
        rows = self.find(Atspi.Role.LIST, "desk")
        act(rows.get_child_at_index(1), "SetFocus")
        self.wait_heard("object:state-changed:focused", "Albums")
        act(self.find(Atspi.Role.PUSH_BUTTON, "Options"), "Press")
        menu = self.find(Atspi.Role.POPUP_MENU, "Options")
        self.assertTrue(is_in(menu, Atspi.StateType.MODAL))
        self.find(Atspi.Role.PUSH_BUTTON, "Select")
        self.find(Atspi.Role.PUSH_BUTTON, "Back")
        act(self.find(Atspi.Role.MENU_ITEM, "Delete", menu), "Press")
        question = self.find(Atspi.Role.ALERT, "Delete dir?")
        self.assertEqual(question.get_description(), str(self.desk / "Albums"))
        self.wait_heard("object:state-changed:showing", "Delete dir?")
        self.assertTrue(is_in(question, Atspi.StateType.FOCUSED))
        # What lies below takes nothing meanwhile.
        with self.assertRaises(quarn.Failure):
            act(rows.get_child_at_index(0), "Press")
        act(self.find(Atspi.Role.PUSH_BUTTON, "Yes", question), "Press")
        quarn.wait_until(lambda: not (self.desk / "Albums").exists(), "the folder to go")
        self.wait_names(rows, [".."])

    def test_submenusAndDisabledItems(self):
        program = self.begin("a.txt")
        program.key("softleft")
        act(self.find(Atspi.Role.MENU_ITEM, "Copy menu"), "ShowMenu")
        menu = self.find(Atspi.Role.POPUP_MENU, "Copy menu")
        self.wait_names(menu, ["Copy", "Move", "Paste", "Paste as.."])
        self.assertTrue(is_in(menu.get_child_at_index(0), Atspi.StateType.SENSITIVE))
        self.assertFalse(is_in(menu.get_child_at_index(2), Atspi.StateType.SENSITIVE))
        program.key("down")
        self.wait_heard("object:state-changed:focused", "Move")

    def test_nameIsTypedIntoAFieldThatIsRead(self):
        program = self.begin("a.txt")
        program.key("down", "softleft", "4")
        dialog = self.find(Atspi.Role.DIALOG)
        field = self.find(Atspi.Role.TEXT, start=dialog)
        self.assertEqual(Atspi.Text.get_text(field, 0, -1), "a.txt")
        self.assertTrue(is_in(field, Atspi.StateType.FOCUSED))
        self.assertEqual(field.get_name(), dialog.get_description())
        self.assertTrue(dialog.get_name())
        Atspi.EditableText.set_text_contents(field, "b.txt")
        act(self.find(Atspi.Role.PUSH_BUTTON, "Yes", dialog), "Press")
        quarn.wait_until(lambda: (self.desk / "b.txt").exists(), "the new name")

    def places_in_the_field(self, name, **where):
        """Of the field that a file is renamed in: its own place and those of its characters, in
        pixels of the screen, when each was seen to lie where its ink is; and the scale."""
        program = self.begin(name, **where)
        program.key("down", "softleft", "4")
        field = self.find(Atspi.Role.TEXT)
        Atspi.Text.remove_selection(field, 0)
        quarn.wait_until(lambda: Atspi.Text.get_n_selections(field) == 0, "nothing selected")
        picture = program.wait_stable().convert("L")
        left, top, _, _ = program.rectangle()
        in_window = [(place.x - left, place.y - top, place.width, place.height)
                     for place in self.places(field, len(name))]
        for letter, (x, y, width, height) in zip(name, in_window[1:]):
            ink = picture.crop((x, y + height // 5, x + width, y + height * 4 // 5)).getextrema()
            self.assertEqual(ink[0] < 176, letter != " ", (name, letter, x, y, width, height))
        corner_x, corner_y, scale = quarn.screen_in(picture.size)
        program.stop()
        return [((x - corner_x) / scale, (y - corner_y) / scale, width / scale, height / scale)
                for x, y, width, height in in_window], scale

    @staticmethod
    def places(field, length):
        screen = Atspi.CoordType.SCREEN
        yield Atspi.Component.get_extents(field, screen)
        for offset in range(length):
            yield Atspi.Text.get_character_extents(field, offset, screen)

    def test_textIsWhereItIsSeenAtEveryScale(self):
        name = "W W  WiW"
        expected, scale = self.places_in_the_field(name)
        self.assertEqual(scale, 1)
        large = quarn.Display(720, 960)
        self.addCleanup(large.stop)
        cases = [({"display": large, "scale": None}, 3), ({"scale": "0.75"}, 0.75)]
        cases += [({"display": large, "scale": str(scale)}, scale) for scale in (1, 1.5, 2, 3)]
        for where, scale in cases:
            with self.subTest(**where):
                found, found_scale = self.places_in_the_field(name, **where)
                self.assertEqual(found_scale, scale)
                for one, other in zip(expected, found):
                    for length, other_length in zip(one, other):
                        self.assertAlmostEqual(length, other_length, delta=1 / scale)

    def test_rowsAreWhereTheyAreSeenAtEveryScale(self):
        large = quarn.Display(760, 1000)
        self.addCleanup(large.stop)
        for scale in ("0.75", "1", "1.5", "2", "3"):
            with self.subTest(scale):
                program = self.begin("Albums/", "a.txt", display=large, scale=scale)
                rows = self.find(Atspi.Role.LIST, "desk")
                large.client.move(program.window(), 36, 24)
                program.place = None
                window = quarn.wait_until(program.rectangle, "the window")
                self.assertEqual(window[:2], (36, 24))
                for number, key in enumerate(("up", "down", "down")):
                    program.key(*[key] * (number > 0))
                    picture = program.wait_stable()
                    place = Atspi.Component.get_extents(rows.get_child_at_index(number),
                                                        Atspi.CoordType.SCREEN)
                    seen = highlight_in(picture)
                    told = (place.x - window[0], place.y - window[1])
                    told = (*told, told[0] + place.width, told[1] + place.height)
                    for side, seen_side in zip(told[:2] + told[3:], seen[:2] + seen[3:]):
                        self.assertAlmostEqual(side, seen_side, delta=1)
                    middle = place.x + place.width // 2, place.y + place.height // 2
                    found = Atspi.Component.get_accessible_at_point(rows, *middle,
                                                                    Atspi.CoordType.SCREEN)
                    self.assertEqual(found.get_index_in_parent(), number)
                    # Of the top-left corner of the window.
                    inside = Atspi.Component.get_extents(rows.get_child_at_index(number),
                                                         Atspi.CoordType.WINDOW)
                    self.assertEqual((inside.x, inside.y), told[:2])
                program.stop()

    def test_modeOfAKeypadIsSaid(self):
        program = self.begin("a.txt")
        (program.stage / "keymap.cfg").write_text("Keypad = 1\n")
        program.kill()
        program.wait_end()
        program.start(**self.buses.environment, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        self.app = quarn.wait_until(lambda: self.reader.application(program.pid()),
                                    "the program on the bus")
        program.key("down", "softleft", "4")
        field = self.find(Atspi.Role.TEXT)
        self.find(Atspi.Role.LABEL, "abc", field)
        program.key("hash")
        self.find(Atspi.Role.LABEL, "Abc", field)

    def test_findingIsHeard(self):
        program = self.begin("Albums/", "Documents/", "Music/")
        program.display.client.type("doc")
        self.wait_heard("object:state-changed:focused", "Documents")
        self.wait_heard("object:property-change:accessible-name", "Doc")

    def test_oneRowOfManyIsReadWithoutTheOthers(self):
        many = self.scratch()
        for number in range(MANY):
            (many / f"{number:05}").touch()
        self.begin("a.txt", second_folder=many)
        self.program_.key("right")
        rows = self.find(Atspi.Role.LIST, many.name)
        self.assertEqual(rows.get_child_count(), MANY + 1)
        row = rows.get_child_at_index(MANY)
        self.assertEqual(row.get_name(), f"{MANY - 1:05}")
        self.assertEqual(row.get_index_in_parent(), MANY)
        self.assertFalse(is_in(row, Atspi.StateType.SHOWING) and
                         is_in(row, Atspi.StateType.SELECTED))
        act(row, "SetFocus")
        self.wait_heard("object:state-changed:focused", f"{MANY - 1:05}")

    def test_rowsOfAFolderThatWasLeftAreGone(self):
        program = self.begin("Albums/")
        rows = self.find(Atspi.Role.LIST, "desk")
        row = rows.get_child_at_index(1)
        self.assertEqual(row.get_name(), "Albums")
        program.key("down", "select")
        program.wait_for_listing(self.desk / "Albums")
        self.wait_names(self.find(Atspi.Role.LIST, "Albums"), [".."])
        with self.assertRaises(quarn.Failure):
            act(row, "Press")

    def test_whatIsInTheWayIsReadAndAnswered(self):
        self.begin_safe("a.txt")
        quarn.make_file(self.other / "a.txt", b"old")
        self.copy_to_other(1)
        page = self.find(Atspi.Role.DIALOG)
        self.assertTrue(is_in(page, Atspi.StateType.MODAL))
        self.assertEqual(page.get_description(), "Already there: 1 (OK: choose)")
        self.wait_heard("object:state-changed:showing", page.get_name())
        rows = self.find(Atspi.Role.LIST, page.get_name(), page)
        row = rows.get_child_at_index(0)
        self.assertEqual(row.get_name(), "a.txt")
        self.assertRegex(row.get_description(), r"^Keep both New: 5 b, .* There: 3 b, ")
        self.wait_heard("object:state-changed:focused", "a.txt")
        act(row, "Press")
        act(self.find(Atspi.Role.MENU_ITEM, "Replace"), "Press")
        quarn.wait_until(lambda: row.get_description().startswith("Replace "), "the other answer")
        act(self.find(Atspi.Role.PUSH_BUTTON, "Copy", page), "Press")
        quarn.wait_until(lambda: (self.other / "a.txt").read_bytes() == b"12345", "the copy")

    def test_progressHasAValueAndIsCancelledWhateverTheMediumDoes(self):
        def hold_flushes(program):
            for number in range(MANY_SMALL):
                quarn.make_file(self.desk / "tree" / f"{number:04}", b"x" * 100)
            self.gate = operations.inject_faults(program, f"sync hold 0 {self.other}")
            self.gate.close()
            self.addCleanup(self.gate.stand_open)

        self.begin_safe(prepare=hold_flushes)
        self.copy_to_other(1)
        box = self.find(Atspi.Role.ALERT)
        self.assertTrue(is_in(box, Atspi.StateType.BUSY))
        self.wait_heard("object:state-changed:showing", box.get_name())
        percent = 0

        def has_come_on():
            """On a slow machine the first flushes are of less than a percent. Whatever line comes
            into the box has the bar stand elsewhere."""
            nonlocal percent
            bar = self.find(Atspi.Role.PROGRESS_BAR, box.get_name(), box)
            self.assertEqual(Atspi.Value.get_maximum_value(bar), 100)
            percent = Atspi.Value.get_current_value(bar)
            if percent == 0 and self.gate.reached.exists():
                self.gate.step()
            return percent > 0

        quarn.wait_until(has_come_on, "some percent")
        self.assertLess(percent, 100)
        self.wait_heard("object:property-change:accessible-value", box.get_name())

        def is_in_words():
            bar = self.find(Atspi.Role.PROGRESS_BAR, box.get_name(), box)
            return box.get_description().endswith(f"{Atspi.Value.get_current_value(bar):.0f}%")

        quarn.wait_until(is_in_words, "it in words")
        # The next flush does not come to its end, and that is waited for by nobody.
        self.gate.wait_reached()
        act(self.find(Atspi.Role.PUSH_BUTTON, "Cancel", box), "Press")
        self.program_.wait_idle()
        copied = list((self.other / "tree").iterdir())
        self.assertTrue(0 < len(copied) < MANY_SMALL)
        self.assertTrue(all(path.read_bytes() == b"x" * 100 for path in copied))
        self.assertTrue(self.gate.reached.exists())

    def test_whatCouldNotBeDoneIsRead(self):
        self.begin_safe("a.txt", "b.txt", prepare=lambda program: operations.inject_faults(
            program, f"open 5 0 {self.desk}/a.txt"))
        self.copy_to_other(1)
        page = self.find(Atspi.Role.DIALOG)
        self.assertEqual(page.get_description(), "Not done: 1")
        row = self.find(Atspi.Role.LIST, start=page).get_child_at_index(0)
        self.assertEqual(row.get_name(), "a.txt")
        self.assertIn(str(self.desk), row.get_description())
        self.wait_heard("object:state-changed:focused", "a.txt")
        act(self.find(Atspi.Role.PUSH_BUTTON, "Back", page), "Press")
        quarn.wait_until(lambda: self.page_is_gone(page), "the page to go")

    @staticmethod
    def page_is_gone(page):
        screenreader.Reader.look()
        try:
            return not is_in(page, Atspi.StateType.SHOWING)
        except GLib.Error:
            return True

    def test_trashIsReadAndWorked(self):
        self.begin_safe("a.txt", "b.txt")
        self.addCleanup(shutil.rmtree, self.program_.home / ".local", True)
        self.program_.key("down", *operations.COMMANDS["delete"])
        question = self.find(Atspi.Role.ALERT, "Move to trash?")
        act(self.find(Atspi.Role.PUSH_BUTTON, "Yes", question), "Press")
        quarn.wait_until(lambda: not (self.desk / "a.txt").exists(), "the file to go")
        act(self.find(Atspi.Role.PUSH_BUTTON, "Options"), "Press")
        act(self.find(Atspi.Role.MENU_ITEM, "Trash"), "Press")
        page = self.find(Atspi.Role.DIALOG, "Trash")
        rows = self.find(Atspi.Role.LIST, "Trash", page)
        self.wait_names(rows, ["a.txt"])
        self.assertIn(str(self.desk), rows.get_child_at_index(0).get_description())
        self.assertTrue(rows.get_child_at_index(0).get_description().endswith("5 b"))
        act(rows.get_child_at_index(0), "Press")
        act(self.find(Atspi.Role.MENU_ITEM, "Restore"), "Press")
        quarn.wait_until((self.desk / "a.txt").exists, "the file to come back")
        self.wait_names(rows, [])
        self.assertEqual(rows.get_description(), "Trash is empty")


if __name__ == "__main__":
    quarn.main()
