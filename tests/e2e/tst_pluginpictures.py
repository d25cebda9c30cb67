#!/usr/bin/python3
"""What the documents show of the plugins. With --renew, which scripts/pictures says, the pictures are made
anew: look at each of them before they are kept."""

import pathlib
import shutil
import subprocess
import tempfile

import album
import operations
import quarn
import tst_keys
import tst_music
import tst_plugins


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
        player.wait_begun(self.songs / songs[0])
        player.pause()

        def is_in_the_middle():
            self.display.pressed("5")
            return abs((player.mpv.get("time-pos") or 0) - tst_music.SECONDS / 2) < 1

        quarn.wait_until(is_in_the_middle, "the middle of the song")
        self.document("player", player)
        self.display.pressed("select")
        self.document("player-list", player)
        self.display.pressed("softright", "softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)

    def test_quarnKeys(self):
        program = self.program_on(self.card())
        tool = subprocess.Popen([*quarn.ENDS_WITH_US, str(program.stage / "bin" / "quarn-keys")],
                                env=program.environment, stdin=subprocess.DEVNULL)
        self.addCleanup(tool.wait)
        self.addCleanup(tool.kill)
        window = tst_plugins.Plugin(program, "quarn-keys")
        quarn.wait_until(window.has_keyboard, "the keyboard")
        picture = window.wait_stable()
        for number, name in enumerate(tst_keys.GIVEN):
            if number == 2:
                self.document("keys", window)
            self.display.client.press(name)
            picture = window.wait_change(picture)
        self.document("keys-list", window)
        self.display.client.press("F6")
        self.assertEqual(tool.wait(quarn.DEADLINE), 0)


album.in_both_themes(Plugins)

if __name__ == "__main__":
    album.main()
