#!/usr/bin/python3
"""The messages that docs/messages.md tells of: each is sent with qcop as the page says, and does what
it says."""

import pathlib
import re
import wave

import quarn
import tst_instances
import tst_music

PAGE = (pathlib.Path(__file__).resolve().parent.parent.parent / "docs" / "messages.md").read_text()
TOLD = re.findall(r"^\| `(\w+)` \| `([^`]+)` \|", PAGE, re.MULTILINE)
SECONDS, RATE = 300, 8000  # of a song: none ends by itself


class Case(quarn.Case):
    display_options = {"window_manager": True}

    def send(self, program, channel, message):
        # A start that has not come so far is no failure of the message.
        quarn.wait_until(lambda: self.qcop(program, "registered", channel) == 0, f"{channel}")
        self.assertEqual(self.qcop(program, "send", channel, message), 0)

    qcop = staticmethod(tst_instances.qcop)


class TestFileManager(Case):
    def test_showBringsItBack(self):
        program = self.program().start()
        program.key("hide")
        program.wait_hidden()
        self.send(program, "Quarn", "show()")
        program.wait_shown()

    def test_nobodyListensWhenItIsOver(self):
        program = self.program().start()
        self.assertEqual(self.qcop(program, "registered", "Quarn"), 0)
        program.kill()
        program.process.wait(quarn.DEADLINE)
        self.assertEqual(self.qcop(program, "registered", "Quarn"), 1)
        self.assertEqual(self.qcop(program, "send", "Quarn", "show()"), 1)

    def test_aWrongCommandLineIsTold(self):
        program = self.program()
        for words in ((), ("send",), ("send", "Quarn"), ("show", "Quarn")):
            self.assertEqual(self.qcop(program, *words), 2, words)


class TestPlayer(Case):
    def playing(self):
        """A player on the second of three songs."""
        program = self.program(player=True)
        songs = [program.home / name for name in ("a.wav", "b.wav", "c.wav")]
        for song in songs:
            with wave.open(str(song), "wb") as file:
                file.setnchannels(1)
                file.setsampwidth(1)
                file.setframerate(RATE)
                file.writeframes(b"\x80" * SECONDS * RATE)
        player = tst_music.Player(program)
        player.list.write_text("".join(f"{song}\n" for song in songs))
        process = player.start("-d", player.list)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        player.wait_front()
        player.wait_begun(songs[0])
        self.send(program, "LyraPlayer", "next")
        player.wait_plays(songs[1])
        return program, player, songs

    def test_nextAndPrewChangeTheTrack(self):
        program, player, songs = self.playing()
        self.send(program, "LyraPlayer", "prew")
        player.wait_plays(songs[0])
        self.send(program, "LyraPlayer", "next")
        player.wait_plays(songs[1])

    def test_showBringsThePlayerBack(self):
        program, player, songs = self.playing()
        self.display.pressed("hide")
        quarn.wait_until(lambda: player.window() is None, "the player to hide")
        self.send(program, "LyraPlayer", "show")
        player.wait_front()
        player.wait_plays(songs[1])


class TestPage(Case):
    def test_itTellsOfTheMessagesThatAreTriedHere(self):
        self.assertEqual(sorted(TOLD), [("LyraPlayer", "next"), ("LyraPlayer", "prew"),
                                        ("LyraPlayer", "show"), ("Quarn", "show()")])


if __name__ == "__main__":
    quarn.main()
