#!/usr/bin/python3
"""Music: what is picked in the file manager is played by the music player, on an mpv that plays to
nobody. With --renew the reference pictures are made anew: look at each of them before they are
kept."""

import contextlib
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

from PIL import Image, ImageDraw

import keyscript
import quarn

RENEW = "--renew" in sys.argv
# The length of a song: no test takes so long that the next one begins by itself, and half of it
# is shown as the same second whatever the delay of the sound is.
SECONDS = 303.5
# After so many seconds the player has given up an mpv that does not answer.
GIVEN_UP = 25


def make_songs(folder):
    """Songs as MP3 files: one is encoded, the others differ by their tags."""
    encoded = folder / "tone.mp3"
    ffmpeg = ["ffmpeg", "-nostdin", "-loglevel", "error"]
    subprocess.run([*ffmpeg, "-f", "lavfi", "-i", f"sine=frequency=440:duration={SECONDS}",
                    "-ar", "16000", "-c:a", "libmp3lame", "-b:a", "16k", encoded], check=True)
    titles = {"a": "First Light", "b": "The Long Way Home Through the Valley", "c": "Third"}
    for name, title in titles.items():
        subprocess.run([*ffmpeg, "-i", encoded, "-c:a", "copy", "-metadata", f"title={title}",
                        "-metadata", "artist=The Sines", "-metadata", "album=Pure Tones",
                        folder / f"{name}.mp3"], check=True)


def sunrise():
    """The picture of an album: the sun behind hills, above the sea."""
    picture = Image.new("RGB", (400, 400))
    draw = ImageDraw.Draw(picture)
    for y in range(400):
        draw.line((0, y, 400, y), (250 - y // 4, 205 - y // 3, 120 + y // 5))
    draw.ellipse((135, 120, 285, 270), (255, 238, 170))
    draw.polygon(((0, 230), (110, 165), (215, 250), (310, 190), (400, 240), (400, 300), (0, 300)),
                 (86, 60, 92))
    draw.rectangle((0, 280, 400, 400), (36, 52, 96))
    for number, width in enumerate((150, 112, 80, 54, 34)):
        draw.rectangle((210 - width // 2, 296 + 20 * number, 210 + width // 2, 302 + 20 * number),
                       (252, 206, 150))
    return picture


def make_covered_song(folder):
    """A song with a cover, and with names that are longer than a line."""
    cover = folder / "cover.png"
    sunrise().save(cover)
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-i", folder / "tone.mp3", "-i", cover,
                    "-map", "0", "-map", "1", "-c", "copy", "-disposition:v", "attached_pic",
                    "-metadata", "title=Morning", "-metadata",
                    "artist=The Symphonic Orchestra of the Town by the River",
                    "-metadata", "album=Hours of a Day", folder / "07 covered.mp3"], check=True)
    cover.unlink()


class Mpv:
    """What an mpv says of itself on a second connection, which the tests have it offer."""

    def __init__(self, path):
        self.path = path

    def get(self, name):
        """The value of a property; None if it has none or there is no mpv."""
        with contextlib.suppress(OSError, ValueError), socket.socket(socket.AF_UNIX) as asking:
            asking.settimeout(quarn.DEADLINE)
            asking.connect(str(self.path))
            asking.sendall(json.dumps({"command": ["get_property", name],
                                       "request_id": 1}).encode() + b"\n")
            with asking.makefile("rb") as lines:
                for line in lines:
                    answer = json.loads(line)
                    if answer.get("request_id") == 1:
                        return answer.get("data")
        return None


class Player(quarn.Watched):
    """The music player of a file manager, which may run or not."""

    def __init__(self, program):
        self.program = program
        self.display = program.display
        self.executable = program.stage / "plugins" / "LyraPlayer" / "LyraPlayer"
        self.list = self.executable.parent / "TempList.m3u"
        self.socket = program.home / "mpv"
        self.mpv = Mpv(self.socket)
        self.options = f"--ao=null --input-ipc-server={self.socket}"

    # Its processes.

    def processes(self, name):
        """Those of this program's relatives that run an executable of this name."""
        return [pid for pid in self.program.relatives()
                if os.path.basename(self.file_of(pid)) == name]

    @staticmethod
    def file_of(pid):
        with contextlib.suppress(OSError):
            return os.readlink(f"/proc/{pid}/exe")
        return ""

    @property
    def process(self):
        found = self.processes("LyraPlayer")
        return type("Process", (), {"pid": found[0]}) if found else None

    def wait_end(self):
        quarn.wait_until(lambda: not self.processes("LyraPlayer"), "the player's end")
        quarn.wait_until(lambda: not self.processes("mpv"), "the end of mpv")

    def start(self, *arguments, **environment):
        """As a shell would, without the file manager."""
        return self.program.spawn([str(self.executable), *map(str, arguments)],
                                  QUARN_MPV_OPTIONS=self.options, **environment)

    # Its window.

    def window(self):
        found = self.display.client.windows("LyraPlayer")
        return found[0] if found else None

    def wait_front(self):
        """Waits until the player is shown and has the keys."""
        quarn.wait_until(lambda: self.window() and self.window() == active(self.display),
                         "the player in front")

    def screenshot(self):
        window = self.window()
        place = self.display.client.place(window) if window else None
        return self.display.client.picture(*place) if place else None

    def check(self, name):
        """The window looks like reference/name.png, which is made first to renew it."""
        if RENEW and name not in keyscript.Script.renewed_names:
            keyscript.Script.renewed_names.add(name)
            keyscript.renewed(self, name, ())
        else:
            keyscript.compare(self, name, ())

    # What plays.

    def wait_plays(self, song):
        quarn.wait_until(lambda: self.mpv.get("path") == str(song),
                         lambda: f"{song} to be played, not {self.mpv.get('path')}")

    def wait_begun(self, song):
        """Waits until the first song is played. An mpv that answers too late is given up; then Play starts
        another one."""
        since = time.monotonic()

        def plays():
            nonlocal since
            if self.mpv.get("path") == str(song):
                return True
            if time.monotonic() - since > GIVEN_UP:
                since = time.monotonic()
                self.display.pressed("softleft")
            return False

        quarn.wait_until(plays, f"{song} to be played", 4 * quarn.DEADLINE)

    def pause(self):
        """Makes it pause, if it does not."""
        since = None

        def is_paused():
            nonlocal since
            paused = self.mpv.get("pause")
            if paused is False and (since is None or time.monotonic() - since > GIVEN_UP):
                since = time.monotonic()
                self.display.pressed("softleft")
            return paused

        quarn.wait_until(is_paused, "the pause")

    def position(self):
        return self.mpv.get("time-pos") or 0


def active(display):
    return display.client.active()


class Case(quarn.Case):
    display_options = {"window_manager": True, "width": 320, "height": 420}

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.songs = pathlib.Path(tempfile.mkdtemp(prefix="qm"))
        cls.addClassCleanup(shutil.rmtree, cls.songs, True)
        make_songs(cls.songs)
        make_covered_song(cls.songs)

    def music(self, *names, extras=None):
        """A file manager, not started yet, with these songs in its folder, and its player."""
        program = self.program(player=True, extras=extras)
        for name in names:
            path = program.home / name
            path.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(self.songs / path.name, path)
        return program, Player(program)

    def started(self, *names):
        program, player = self.music(*names)
        program.start(QUARN_MPV_OPTIONS=player.options)
        self.wait_file_manager(program)
        return program, player

    def back_to_the_file_manager(self, program):
        """Hides the player, as a user does who looks for more."""
        self.display.pressed("hide")
        self.wait_file_manager(program)

    def wait_file_manager(self, program):
        """Waits until it has the keys; the box that it shows at a start takes them for a while."""
        quarn.wait_until(lambda: active(self.display) == program.window(), "the file manager")
        quarn.wait_until(lambda: not program.shows_box(), "the progress box to go")

    def end(self, player):
        """By its key."""
        player.wait_front()
        self.display.pressed("softright")
        player.wait_end()


class TestFileManager(Case):
    def test_markedEntriesArePlayedAndTheMusicKeysStepThroughThem(self):
        program, player = self.started("album/a.mp3", "album/b.mp3", "c.mp3")
        program.key("0", "down", "select", "down", "select", "music")
        player.wait_front()
        songs = [program.home / name for name in ("album/a.mp3", "album/b.mp3", "c.mp3")]
        self.assertEqual(player.list.read_text(), "".join(f"{song}\n" for song in songs) + "\n")
        player.wait_plays(songs[0])
        self.back_to_the_file_manager(program)
        for key, song in (("next", 1), ("next", 2), ("prev", 1)):
            program.key(key)
            player.wait_plays(songs[song])
        # The music goes on while the player is hidden; whatever is picked, it only comes back.
        position = player.position()
        quarn.wait_until(lambda: player.position() > position, "the song to go on")
        program.key("up", "music")
        player.wait_front()
        player.wait_plays(songs[1])
        self.back_to_the_file_manager(program)
        program.with_modifier("music")
        player.wait_front()
        self.end(player)
        self.wait_file_manager(program)
        program.key("next", "prev")
        program.wait_idle()
        self.assertFalse(program.shows_box())
        self.assertIsNone(player.process)

    def test_aFolderIsPlayedWithWhatIsBelowIt(self):
        program, player = self.started("album/b.mp3", "album/deep/a.mp3", "c.mp3")
        program.key("down", "music")
        player.wait_front()
        player.wait_plays(program.home / "album" / "b.mp3")
        self.display.pressed("right")
        player.wait_plays(program.home / "album" / "deep" / "a.mp3")
        self.end(player)

    def test_oneFileIsPlayedAndTheLastListIsKept(self):
        program, player = self.started("a.mp3", "c.mp3")
        player.list.write_text(f"{program.home}/c.mp3\n")
        program.key("down", "music")
        player.wait_front()
        player.wait_plays(program.home / "a.mp3")
        self.end(player)
        self.wait_file_manager(program)
        program.with_modifier("music")
        player.wait_front()
        player.wait_plays(program.home / "c.mp3")
        self.end(player)

    def test_thePlayerOutlivesTheFileManager(self):
        program, player = self.started("a.mp3")
        program.key("down", "music")
        player.wait_plays(program.home / "a.mp3")
        program.kill()
        program.process.wait(quarn.DEADLINE)
        position = player.position()
        quarn.wait_until(lambda: player.position() > position, "the song to go on")
        self.end(player)


class PlayingCase(Case):
    def playing(self, *songs, extras=None, **environment):
        """A player on a list, without a file manager."""
        program, player = self.music(*songs, extras=extras)
        player.list.write_text("".join(f"{program.home / song}\n" for song in songs))
        process = player.start("-d", player.list, **environment)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        player.wait_front()
        player.wait_plays(program.home / songs[0])
        return program, player, process

    def checkCover(self, extras, scale=1):
        """Its window and its list of titles, with a cover."""
        _, player, process = self.playing("07 covered.mp3", "a.mp3", extras=extras,
                                          QUARN_SCALE=str(scale))
        suffix = f"_{scale}" if scale > 1 else ""
        self.display.pressed("softleft")
        quarn.wait_until(lambda: player.mpv.get("pause"), "the pause")

        def is_at_the_start():
            self.display.pressed("0")
            return player.position() < 0.5

        quarn.wait_until(is_at_the_start, "the start of the song")
        player.check(f"player_cover{suffix}")
        self.display.pressed("select")
        player.check(f"player_list_of_titles{suffix}")
        self.display.pressed("softright", "softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)


class TestPlayer(PlayingCase):
    def test_looksAsItShall(self):
        _, player, process = self.playing("b.mp3", "a.mp3", "c.mp3")
        self.display.pressed("softleft")
        quarn.wait_until(lambda: player.mpv.get("pause"), "the pause")
        self.display.pressed("down", "down")

        def is_in_the_middle():
            # Where that is the player knows as soon as it knows the length.
            self.display.pressed("5")
            return abs((player.mpv.get("time-pos") or 0) - SECONDS / 2) < 1

        quarn.wait_until(is_in_the_middle, "the middle of the song")
        player.check("player")
        self.display.pressed("select", "down")
        player.check("player_list")
        self.display.pressed("softright", "softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)

    def test_showsTheCoverOfTheSong(self):
        self.checkCover(None)

    def test_isTheSameInTheDarkTheme(self):
        self.checkCover({"Theme": 1})

    def test_saysWhatItCannotPlay(self):
        program, player, process = self.playing("a.mp3", "b.mp3")
        quarn.make_file(program.home / "b.mp3", b"this is no music")
        self.display.pressed("right")
        player.check("player_skipped")
        self.display.pressed("softright", "softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)

    def test_saysThatThereIsNoMpv(self):
        program, player = self.music("a.mp3")
        process = player.start("-d", program.home / "a.mp3", PATH="/nonexistent")
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        player.wait_front()
        player.check("player_without_mpv")
        self.display.pressed("softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)

    def test_keysReachMpv(self):
        _, player, process = self.playing("a.mp3", "c.mp3")
        self.display.pressed("down", "down", "up")
        quarn.wait_until(lambda: player.mpv.get("volume") == 95, "the volume")
        self.display.pressed("music")
        quarn.wait_until(lambda: player.mpv.get("pause"), "the pause")
        self.display.pressed("5")
        quarn.wait_until(lambda: abs(player.position() - SECONDS / 2) < 2, "the position")
        self.display.pressed("next")
        player.wait_plays(player.program.home / "c.mp3")
        self.assertFalse(player.mpv.get("pause"))
        self.display.pressed("softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)
        player.wait_end()

    def test_aSecondStartOnlyShowsTheFirst(self):
        program, player, process = self.playing("a.mp3", "c.mp3")
        self.display.pressed("hide")
        quarn.wait_until(lambda: player.window() is None, "the window to go")
        second = player.start("-d", program.home / "c.mp3")
        _, errors = second.communicate(timeout=quarn.DEADLINE)
        self.assertEqual((second.returncode, errors), (0, b""))
        player.wait_front()
        self.assertEqual(player.mpv.get("path"), str(program.home / "a.mp3"))
        self.assertEqual(len(player.processes("mpv")), 1)
        self.display.pressed("softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)

    def test_mpvEndsHoweverThePlayerEnds(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGKILL):
            with self.subTest(number):
                _, player, process = self.playing("a.mp3")
                [mpv] = player.processes("mpv")
                process.send_signal(number)
                process.wait(quarn.DEADLINE)
                player.wait_end()
                quarn.wait_until(lambda: not os.path.exists(f"/proc/{mpv}/exe"), "the end of mpv")

    def test_anMpvThatHangsEndsWithThePlayer(self):
        _, player, process = self.playing("a.mp3")
        [mpv] = player.processes("mpv")
        os.kill(mpv, signal.SIGSTOP)
        process.kill()
        process.wait(quarn.DEADLINE)
        player.wait_end()

    def test_afterMpvHasDiedPlayStartsItAgain(self):
        program, player, process = self.playing("a.mp3")
        before = player.screenshot()
        [mpv] = player.processes("mpv")
        os.kill(mpv, signal.SIGKILL)
        bar = (120, 290)
        quarn.wait_until(lambda: player.screenshot().getpixel(bar) != before.getpixel(bar),
                         "the message")
        self.display.pressed("softleft")
        player.wait_plays(program.home / "a.mp3")
        self.display.pressed("softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)

    def test_leavesNothingBehind(self):
        program, player, process = self.playing("a.mp3")
        self.display.pressed("softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)
        player.wait_end()
        sockets = [path for path in program.base.rglob("*") if path.is_socket()]
        # The one that the tests have mpv offer is mpv's.
        self.assertEqual([path for path in sockets if path != player.socket], [])

    def test_sleepsWhenItIsHiddenOrPaused(self):
        _, player, process = self.playing("a.mp3")
        before = player.screenshot()
        quarn.wait_until(lambda: player.screenshot().tobytes() != before.tobytes(),
                         "the time to go on")
        self.display.pressed("hide")
        quarn.wait_until(lambda: player.window() is None, "the window to go")
        player.wait_idle(calm=3)
        self.assertFalse(player.mpv.get("pause"))
        player.start().communicate(timeout=quarn.DEADLINE)
        player.wait_front()
        self.display.pressed("softleft")
        quarn.wait_until(lambda: player.mpv.get("pause"), "the pause")
        player.wait_idle(calm=3)
        self.display.pressed("softright")
        self.assertEqual(process.wait(quarn.DEADLINE), 0)


class TestScales(PlayingCase):
    """The player's window in pictures of larger scales."""

    display_options = {"window_manager": True, "width": 3 * quarn.WIDTH + 60,
                       "height": 3 * quarn.HEIGHT + 80}

    def test_isAsSharpAtTwice(self):
        self.checkCover(None, 2)

    def test_isAsSharpAtThrice(self):
        self.checkCover(None, 3)


if __name__ == "__main__":
    if RENEW:
        sys.argv.remove("--renew")
    quarn.main()
