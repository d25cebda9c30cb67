#!/usr/bin/python3
"""What the documents show of the file manager. With --renew, which scripts/pictures says, the pictures are
made anew: look at each of them before they are kept."""

import contextlib
import shutil

import album
import operations
import quarn
import safescenes
import tst_bluetooth

# Where something stands that is not the same each time: the cursor behind a name that is typed, the path
# in a question, the path and the owner in the properties.
CURSOR = 36, 148, 26, 22
PATH = 12, 166, 216, 18
PATH_TO_OWNER = 12, 170, 216, 64
BOOKMARKS = "\nMusic\n/\nPhotos\n/\nStick\n/"


class Window(album.Page):
    """The file manager itself."""

    def begin(self, second=None, **environment):
        card = self.card()
        program = self.program_on(card, second and card / second, player=True)
        (program.stage / "bookmark.cfg").write_text(BOOKMARKS)
        program.start(**environment)
        return program, card

    def test_lists(self):
        program, _ = self.begin()
        program.key(*["down"] * 6)
        self.document("list", program)
        self.document("find", program, again=lambda: program.key("7", "3"))
        program.key("hash")
        self.document("short", program)
        program.key("hash", "0", "select", "up", "select")
        self.document("marked", program)
        program.key("0", "star")
        self.document("full", program)

    def test_menus(self):
        program, _ = self.begin("Photos")
        program.key(*["down"] * 6, "softleft")
        self.document("menu", program)
        program.key("3")
        self.document("copymenu", program)
        program.key("1", "right")
        self.document("paste", program)
        program.key("softleft", "1")
        self.document("openwith", program)
        program.key("softright", "6")
        self.document("bookmarks", program)
        program.key("softright", "softright", "right")
        self.document("about", program)

    def test_boxes(self):
        program, card = self.begin("Photos")
        shutil.copy2(card / "sea.jpg", card / "Photos" / "sea.jpg")
        user = operations.User(program, card, card / "Photos")
        program.key(*["down"] * 6, "softleft", "3", "1", "right", "softleft", "3", "3")
        user.wait_question()
        self.document("exists", program)
        user.answer(False)
        program.key("left", "softleft", "2")
        user.wait_question()
        self.document("delete", program, PATH)
        user.answer(False)
        program.key("softleft", "8")
        user.wait_message()
        self.document("properties", program, PATH_TO_OWNER)

    def test_names(self):
        program, _ = self.begin(QUARN_KEYPAD="1")
        program.key(*["down"] * 6, "softleft", "4")
        self.document("rename", program, CURSOR)
        program.key("star")
        self.document("symbols", program, CURSOR)

    def test_bluetooth(self):
        with contextlib.ExitStack() as stack:
            services = tst_bluetooth.Services(stack)
            card = self.card()
            program = self.program_on(card)
            program.start(DBUS_SYSTEM_BUS_ADDRESS=services.address,
                          DBUS_SESSION_BUS_ADDRESS=services.address)
            program.key(*["down"] * 6, *tst_bluetooth.TO_BLUETOOTH)
            self.document("bluetooth", program)
            program.stop()


class Safe(album.Page):
    """Safe operations and the trash."""

    extras = {**album.Page.extras, **safescenes.EXTRAS}

    def test_pages(self):
        base = album.made_base()
        self.addCleanup(shutil.rmtree, base)
        left, right = quarn.make_folder(base / "Card"), quarn.make_folder(base / "Copy")
        program = self.program_on(left, right)
        scenes = safescenes.Scenes(program, left, right)
        program.start()
        around = safescenes.around
        scenes.show_question(lambda *holes: self.document("safe", program, around(holes)))
        scenes.show_failures(lambda *holes: self.document("failures", program, around(holes)))
        scenes.show_progress(lambda *holes: self.document("progress", program, around(holes)))
        scenes.show_trash(lambda *holes: self.document("trash", program, around(holes)))


album.in_both_themes(Window)
album.in_both_themes(Safe)

if __name__ == "__main__":
    album.main()
