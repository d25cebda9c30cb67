#!/usr/bin/python3
"""What a program that reads the screen to its user gets from the staged program, and can do in it."""

import quarn
import screenreader
from screenreader import act, actions, children, is_in, walk

from gi.repository import Atspi

EXTRAS = {"Find": 1, "Status": 1}
MANY = 20000


class Test(quarn.Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.buses = screenreader.Buses(cls.display)
        cls.addClassCleanup(cls.buses.stop)
        cls.reader = screenreader.Reader(cls.buses)
        cls.reader.listen("object:state-changed", "object:property-change")

    def begin(self, *names, second_folder="/", display=None, scale="1", **settings):
        program = quarn.Program(display or self.display, extras=EXTRAS, settings=settings,
                                second_folder=second_folder)
        self.addCleanup(program.stop)
        self.desk = quarn.make_folder(program.base / "desk")
        for name in names:
            if name.endswith("/"):
                quarn.make_folder(self.desk / name)
            else:
                quarn.make_file(self.desk / name, b"12345")
        program.settings["Start_path_tab1"] = self.desk
        program.write_settings()
        program.start(**self.buses.environment, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                      QUARN_SCALE=scale)
        self.app = quarn.wait_until(lambda: self.reader.application(program.pid()),
                                    "the program on the bus")
        self.reader.forget()
        self.program_ = program
        return program

    def find(self, role, name=None, start=None):
        """The first that is seen of this role and name."""
        def search():
            self.reader.look()
            return next((node for node in walk(start or self.app)
                         if node.get_role() == role and name in (None, node.get_name())), None)

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
        large = quarn.Display(480, 640)
        self.addCleanup(large.stop)
        for where, scale in (({"display": large, "scale": None}, 2), ({"scale": "0.75"}, 0.75)):
            with self.subTest(scale):
                found, found_scale = self.places_in_the_field(name, **where)
                self.assertEqual(found_scale, scale)
                for one, other in zip(expected, found):
                    for length, other_length in zip(one, other):
                        self.assertAlmostEqual(length, other_length, delta=1 / scale)

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


if __name__ == "__main__":
    quarn.main()
