#!/usr/bin/python3
"""What the documents show of the program and its plugins. With --renew, which scripts/pictures says, the
pictures are made anew: look at each of them before they are kept."""

import contextlib
import pathlib
import shutil
import tempfile

import album
import operations
import quarn
import tst_bluetooth
import tst_music
import tst_plugins

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


class Plugins(album.Page):
    """The programs that come along."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.songs = pathlib.Path(tempfile.mkdtemp(prefix="qm"))
        cls.addClassCleanup(shutil.rmtree, cls.songs, True)
        tst_music.make_songs(cls.songs)
        tst_music.make_covered_song(cls.songs)

    def opened(self, name, plugin):
        """A plugin that has been picked for a file of the card."""
        card = self.card()
        program = self.program_on(card)
        program.start()
        program.key(*["down"] * operations.listed(card).index(name), "select")
        return tst_plugins.Plugin(program, plugin)

    def test_picView(self):
        viewer = self.opened("sea.jpg", "PicView")
        self.document("picview", viewer)
        viewer.end()

    def test_textView(self):
        viewer = self.opened("Letter.txt", "TextView")
        self.document("textview", viewer)
        viewer.end()

    def test_execute(self):
        window = self.opened("tour.sh", "Execute")
        self.document("execute", window)
        window.end()

    def test_lyraPlayer(self):
        program = self.program_on(self.card(), player=True)
        player = tst_music.Player(program)
        songs = ["07 covered.mp3", "a.mp3", "c.mp3"]
        player.list.write_text("".join(f"{self.songs / song}\n" for song in songs))
        process = player.start("-d", player.list)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        player.wait_front()
        player.wait_plays(self.songs / songs[0])
        self.display.pressed("softleft")
        quarn.wait_until(lambda: player.mpv.get("pause"), "the pause")

        def is_in_the_middle():
            self.display.pressed("5")
            return abs((player.mpv.get("time-pos") or 0) - tst_music.SECONDS / 2) < 1

        quarn.wait_until(is_in_the_middle, "the middle of the song")
        self.document("player", player)
        self.display.pressed("select")
        self.document("player-list", player)
        self.display.pressed("softright", "softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)


album.in_both_themes(Window)
album.in_both_themes(Plugins)

if __name__ == "__main__":
    album.main()
