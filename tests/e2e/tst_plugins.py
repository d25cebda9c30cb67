#!/usr/bin/python3
"""The helper programs that files are opened with: pictures, texts and programs are picked in the
file manager. With --renew the reference pictures are made anew: look at each of them before they
are kept."""

import contextlib
import os
import pathlib
import signal
import sys

from PIL import Image, ImageDraw

import keyscript
import quarn

RENEW = "--renew" in sys.argv


def draw_picture(path, size, turned=False):
    """A landscape; turned, it is one only if the orientation in the file is heeded."""
    width, height = size
    picture = Image.new("RGB", size, (120, 180, 240))
    draw = ImageDraw.Draw(picture)
    draw.ellipse((width * 3 // 4, height // 8, width * 7 // 8, height // 8 + width // 8),
                 fill=(255, 220, 60))
    draw.polygon([(0, height), (width // 3, height // 3), (width * 2 // 3, height)],
                 fill=(30, 110, 50))
    draw.polygon([(width // 2, height), (width * 3 // 4, height // 2), (width, height)],
                 fill=(50, 160, 70))
    if not turned:
        picture.save(path)
        return
    orientation = Image.Exif()
    orientation[0x112] = 6  # the picture's top is at the right
    picture.transpose(Image.Transpose.ROTATE_90).save(path, exif=orientation, quality=95)


class Plugin(quarn.Watched):
    """The window of a plugin that a file manager has started."""

    renewed_names = set()
    screenshot = quarn.Program.screenshot
    wait_stable = quarn.Program.wait_stable
    wait_change = quarn.Program.wait_change

    def __init__(self, program, name):
        self.program = program
        self.display = program.display
        self.name = name
        quarn.wait_until(self.window, f"the window of {name}")

    def window(self):
        """The id of the window; None without one."""
        found = self.display.client.windows(self.name)
        return found[0] if found else None

    def rectangle(self):
        window = self.window()
        return None if window is None else self.display.client.place(window)

    def pid(self):
        """The process; None without one."""
        wanted = self.program.stage / "plugins" / self.name / self.name
        for pid in self.program.relatives():
            with contextlib.suppress(OSError):
                if os.readlink(f"/proc/{pid}/exe") == str(wanted):
                    return pid
        return None

    def has_keyboard(self):
        client = self.display.client
        holder = client.active() if self.display.manager else client.focus()
        return holder == self.window() is not None

    def key(self, *names):
        quarn.wait_until(self.has_keyboard, f"the keyboard to be {self.name}'s")
        self.display.pressed(*names)

    def snapshot(self, name):
        """The window looks like reference/NAME.png."""
        if RENEW and name not in self.renewed_names:
            self.renewed_names.add(name)
            keyscript.renewed(self, name, ())
        else:
            keyscript.compare(self, name, ())

    def end(self):
        self.key("softright")
        self.wait_end()

    def wait_end(self):
        quarn.wait_until(lambda: self.window() is None and self.pid() is None,
                         f"{self.name} to end")


class TestPlugins(quarn.Case):
    display_options = {"window_manager": True}

    def picked(self, program, plugin):
        """Picks the first file in the first panel; gives what it is opened with."""
        program.start()
        program.key("down", "select")
        return Plugin(program, plugin)


class KeyboardCase:
    """Who has the keyboard, and where windows open. The pointer is beside them all, and so gives the
    keys to none."""

    CORNER = (70, 50)
    ELSEWHERE = (180, 120)

    def opened(self, program):
        """A program at a place of its own, and the text viewer that it has started."""
        client = self.display.client
        quarn.make_file(program.home / "a.txt", b"text\n")
        program.start()
        client.point(client.size.width - 1, client.size.height - 1)
        client.move(program.window(), *self.CORNER)
        program.place = None
        quarn.wait_until(lambda: client.place(program.window())[:2] == self.CORNER or
                         self.display.manager and client.place(program.window())[0] > 60,
                         "the window to be moved")
        program.key("down", "select")
        return Plugin(program, "TextView")

    def wait_keyboard(self, program):
        """Waits until the keyboard is the file manager's and its list hears keys."""
        client = self.display.client
        holder = client.active if self.display.manager else client.focus
        quarn.wait_until(lambda: holder() == program.window(),
                         "the keyboard to be the file manager's")
        # It may still say that it starts the plugin, and then takes all keys; behind a window that has
        # just gone that is seen a moment later.
        program.wait_stable()
        quarn.wait_until(lambda: not program.shows_box(), "the busy box to go")

    def assertListHasKeyboard(self, program, folder=None):
        """The list, which shows this folder, answers a key."""
        self.wait_keyboard(program)
        program.key("folderup")
        program.wait_for_listing(f"{folder or program.home}/..")

    def test_thePluginOpensWhereTheFileManagerIs(self):
        program = self.program()
        viewer = self.opened(program)
        wanted = self.display.client.place(program.window())
        quarn.wait_until(lambda: viewer.rectangle() == wanted,
                         lambda: f"{viewer.rectangle()} to be {wanted}")
        viewer.end()

    def test_whenTheFileManagerMovesItsNextPluginOpensThere(self):
        program = self.program()
        self.opened(program).end()
        self.wait_keyboard(program)
        client = self.display.client
        before = client.place(program.window())
        client.move(program.window(), *self.ELSEWHERE)
        quarn.wait_until(lambda: client.place(program.window())[:2] != before[:2],
                         "the window to be moved again")
        program.place = None
        self.wait_keyboard(program)
        wanted = client.place(program.window())
        program.key("select")
        viewer = Plugin(program, "TextView")
        quarn.wait_until(lambda: viewer.rectangle() == wanted,
                         lambda: f"{viewer.rectangle()} to be {wanted}")
        viewer.end()

    def test_afterAPluginTheListHasTheKeyboard(self):
        program = self.program()
        viewer = self.opened(program)
        viewer.end()
        self.assertListHasKeyboard(program)

    def test_afterAPluginThatIsKilledTheListHasTheKeyboard(self):
        program = self.program()
        viewer = self.opened(program)
        quarn.wait_until(viewer.has_keyboard, "the viewer to have the keyboard")
        os.kill(viewer.pid(), signal.SIGKILL)
        viewer.wait_end()
        self.assertListHasKeyboard(program)


class TestKeyboardWithAManager(KeyboardCase, TestPlugins):
    display_options = {"window_manager": True, "width": 500, "height": 500}


class TestKeyboardWithoutAManager(KeyboardCase, TestPlugins):
    display_options = {"width": 500, "height": 500}

    def test_theKeyboardGoesFromWindowToWindow(self):
        """With two plugins one above the other, each that ends uncovers the next."""
        program = self.program()
        first = self.opened(program)
        quarn.wait_until(first.has_keyboard, "the first viewer to have the keyboard")
        second = program.spawn([str(program.stage / "plugins" / "Execute" / "Execute")])
        self.addCleanup(second.communicate)
        self.addCleanup(second.kill)
        runner = Plugin(program, "Execute")
        runner.end()
        first.end()
        self.assertListHasKeyboard(program)

    def test_aWindowThatIsShownAgainGetsTheKeyboard(self):
        program = self.program()
        viewer = self.opened(program)
        viewer.end()
        self.assertListHasKeyboard(program)
        program.key("hide")
        program.wait_hidden()
        self.assertEqual(program.start_again()[0], 0)
        program.wait_shown()
        self.assertListHasKeyboard(program, program.base)


class TestPictures(TestPlugins):
    def test_aPictureIsShownAndItsNeighboursAfterIt(self):
        program = self.program()
        draw_picture(program.home / "a landscape.png", (640, 400))
        draw_picture(program.home / "b turned.jpg", (480, 600), turned=True)
        quarn.make_file(program.home / "c broken.png", b"no picture")
        viewer = self.picked(program, "PicView")
        viewer.snapshot("picview_fitted")
        viewer.key("3", "3", "right")
        viewer.snapshot("picview_enlarged")
        viewer.key("6")
        viewer.snapshot("picview_turned")
        viewer.key("right")
        viewer.snapshot("picview_broken")
        # Behind the last comes the first.
        viewer.key("right")
        viewer.snapshot("picview_fitted")
        viewer.end()
        self.assertTrue(program.is_running())


    def test_aPictureFillsTheScreenAndIsTurned(self):
        program = self.program()
        draw_picture(program.home / "a landscape.png", (640, 400))
        viewer = self.picked(program, "PicView")
        viewer.wait_stable()
        viewer.key("9")
        viewer.snapshot("picview_turned_right")
        viewer.key("star")
        viewer.snapshot("picview_filled")
        viewer.key("star", "7")
        viewer.snapshot("picview_fitted_alone")
        viewer.key("hash")
        viewer.snapshot("picview_only_one")
        viewer.end()

    def test_aSlideShowGoesOnByItself(self):
        program = self.program()
        colours = {"a": (200, 30, 30), "b": (30, 200, 30), "c": (30, 30, 200)}
        for name, colour in colours.items():
            Image.new("RGB", (quarn.WIDTH, quarn.HEIGHT), colour).save(program.home / f"{name}.png")
        viewer = self.picked(program, "PicView")
        viewer.wait_stable()
        viewer.key("hash")
        for name in "bca":
            quarn.wait_until(lambda: self.is_filled(viewer, colours[name]), f"the picture {name}")
        viewer.key("softright")
        quarn.wait_until(lambda: not self.is_filled(viewer, colours["a"]), "the end of the show")
        viewer.end()

    @staticmethod
    def is_filled(viewer, colour):
        return all(viewer.screenshot().getpixel(point) == colour
                   for point in ((0, 0), (239, 0), (120, 160), (0, 290), (239, 290)))


class TestDesktop(TestPlugins):
    """What the desktop opens; scripts stand in for its tools."""

    def started(self, opener, types="exit 1"):
        program = self.program()
        tools = program.base / "tools"
        for name, script in (("xdg-open", opener), ("xdg-mime", types)):
            tool = quarn.make_file(tools / name, f"#!/bin/sh\n{script}\n".encode())
            tool.chmod(0o755)
        quarn.make_file(program.home / "report.pdf", b"%PDF")
        program.start(PATH=f"{tools}:{program.environment['PATH']}")
        program.key("down", "select")
        return program

    def test_aKindThatNobodyOpensIsSaid(self):
        program = self.started("exit 3")
        window = Plugin(program, "Desktop")
        window.snapshot("desktop_no_program")
        window.end()
        self.assertTrue(program.is_running())

    def test_aProgramThatFailsIsSaid(self):
        program = self.started("exit 4", "echo application/pdf")
        window = Plugin(program, "Desktop")
        window.snapshot("desktop_failed")
        window.end()

    def test_whatIsOpenedShowsNoWindow(self):
        noted = "\"$HOME/noted\""
        program = self.started(f"echo \"$1\" > {noted}.new && mv {noted}.new {noted}; "
                               "read line < \"$HOME/gate\"")
        os.mkfifo(program.home / "gate")
        noted = program.home / "noted"
        quarn.wait_until(noted.exists, "the opener to be started")
        self.assertEqual(noted.read_text(), f"{program.home}/report.pdf\n")
        with open(program.home / "gate", "w") as gate:
            gate.write("go\n")
        quarn.wait_until(lambda: not program.relatives(), "the plugin to end")
        self.assertEqual(self.display.client.windows("Desktop"), [])


class TestTexts(TestPlugins):
    def test_linesFromTheRightBeginThere(self):
        program = self.program()
        quarn.make_file(program.home / "letter.txt", (
            "Shalom means peace.\n"
            "\u05e9\u05dc\u05d5\u05dd \u05dc\u05db\u05d5\u05dc\u05dd, "
            "\u05d6\u05d4\u05d5 \u05de\u05db\u05ea\u05d1 \u05e7\u05e6\u05e8 "
            "\u05de\u05df \u05d4\u05d7\u05d5\u05e4\u05e9\u05d4 \u05e9\u05dc\u05e0\u05d5 "
            "(2008).\n\n"
            "1. \u0627\u0644\u0633\u0644\u0627\u0645 "
            "\u0639\u0644\u064a\u0643\u0645, file.txt\n"
            "The end.\n").encode())
        viewer = self.picked(program, "TextView")
        viewer.snapshot("textview_from_the_right")
        viewer.end()

    def test_aTextIsPagedToItsEnd(self):
        program = self.program()
        lines = "".join(f"{number}. Über allen Gipfeln ist Ruh, in allen Wipfeln spürest du kaum "
                        f"einen Hauch.\n" for number in range(1, 41))
        quarn.make_file(program.home / "poem.txt", ("\ufeff" + lines).encode())
        viewer = self.picked(program, "TextView")
        viewer.snapshot("textview_start")
        start = viewer.wait_stable()
        viewer.key("pagedown")
        second = viewer.wait_change(start)
        viewer.key("pageup")
        viewer.wait_change(second)
        # There are about eight pages.
        viewer.key(*["pagedown"] * 20)
        viewer.snapshot("textview_end")
        viewer.key("0")
        viewer.snapshot("textview_long_lines")
        viewer.end()
        self.assertTrue(program.is_running())

    def test_anyFileOpensWithAChosenPlugin(self):
        program = self.program()
        quarn.make_file(program.home / "letter.unknown", b"Dear reader\n")
        program.start()
        program.key("down")
        program.with_modifier("2")
        viewer = Plugin(program, "TextView")
        viewer.wait_stable()
        viewer.end()


class TestDarkTheme(TestPlugins):
    def dark(self):
        return self.program(extras={"Theme": 1})

    def test_textsAreDark(self):
        program = self.dark()
        quarn.make_file(program.home / "poem.txt", "Über allen Gipfeln\nist Ruh.\n".encode() * 30)
        viewer = self.picked(program, "TextView")
        viewer.snapshot("textview_dark")
        viewer.end()

    def test_whatIsSaidOfFilesIsDark(self):
        program = self.dark()
        quarn.make_file(program.home / "empty.txt", b"")
        viewer = self.picked(program, "TextView")
        viewer.snapshot("textview_empty_dark")
        viewer.end()

    def test_picturesLieOnBlackInEveryTheme(self):
        program = self.dark()
        draw_picture(program.home / "a landscape.png", (640, 400))
        viewer = self.picked(program, "PicView")
        viewer.snapshot("picview_fitted_dark")
        viewer.end()


class TestPrograms(TestPlugins):
    SCRIPT = ("#!/bin/sh\n"
              "echo \"Hello from ${PWD##*/}\"\n"
              "echo an error >&2\n"
              "echo $$ > pid\n"
              "exec sleep 1000\n")

    def running(self):
        program = self.program()
        quarn.make_file(program.home / "in" / "hello.sh", self.SCRIPT.encode())
        program.settings["Start_path_tab1"] = program.home / "in"
        program.write_settings()
        runner = self.picked(program, "Execute")
        noted = program.home / "in" / "pid"
        quarn.wait_until(lambda: noted.exists() and noted.read_text().strip(), "the script")
        return program, runner, int(noted.read_text())

    def assertEnds(self, pid):
        quarn.wait_until(lambda: not pathlib.Path("/proc", str(pid), "exe").exists(),
                         "the script to end")

    def test_aScriptShowsWhatItSaysUntilItIsStopped(self):
        program, runner, pid = self.running()
        runner.snapshot("execute_running")
        runner.key("softleft")
        runner.snapshot("execute_stopped")
        self.assertEnds(pid)
        runner.end()
        self.assertTrue(program.is_running())

    def test_aScriptEndsWithTheWindow(self):
        _, runner, pid = self.running()
        runner.end()
        self.assertEnds(pid)

    def test_aScriptEndsWhenThePluginIsKilled(self):
        _, runner, pid = self.running()
        os.kill(runner.pid(), signal.SIGKILL)
        self.assertEnds(pid)
        runner.wait_end()

    def test_closingTheWindowEndsBoth(self):
        _, runner, pid = self.running()
        self.display.client.press("F12")
        runner.wait_end()
        self.assertEnds(pid)


if __name__ == "__main__":
    if RENEW:
        sys.argv.remove("--renew")
    quarn.main()
