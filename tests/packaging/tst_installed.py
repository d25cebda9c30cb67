#!/usr/bin/python3
"""The installed program as its launcher starts it, on a virtual display: it lists, opens files with the
user's settings, and stands a package that is renewed or taken away while it runs."""

import os
import pathlib
import shutil
import signal
import socket
import sys
import tempfile
import time
import unittest

from installation import ROOT, Package, installed, quarn

sys.path.insert(0, str(ROOT / "scripts"))

import rfbclient  # noqa: E402
import wayland  # noqa: E402

REPLACED = "module {}: the program was replaced while it runs; start it anew"
TO_BLUETOOTH = ("softleft", *["down"] * 6, "select")
# The numbers of X for keys, and how long the box at work stays the same at most, in seconds.
DOWN, RETURN = 0xff54, 0xff0d
MOVES = 0.3
# For a server to begin to speak; who asks again gives it more, in seconds.
SPEAKS = 5
PRELOADED = f"{os.environ.get('ASAN_OPTIONS', '')}:verify_asan_link_order=0"
# For looking at what is tested.
PICTURES = os.environ.get("QUARN_PICTURES")
TO_DELETE = ("softleft", "down", "select")


def setUpModule():
    global scratch, original
    scratch = pathlib.Path(tempfile.mkdtemp(prefix="qi"))
    unittest.addModuleCleanup(shutil.rmtree, scratch)
    original = installed(scratch / "original")


class InstalledProgram(quarn.Case):
    def setUp(self):
        super().setUp()
        self.base = pathlib.Path(tempfile.mkdtemp(prefix="t", dir=scratch))
        self.addCleanup(shutil.rmtree, self.base)
        self.package = Package(original, self.base / "usr", stand_in=False)
        self.started = self.program()
        # It has a work folder of the tests, of which nothing is to be used.
        shutil.rmtree(self.started.stage)
        self.work = self.base / "data" / "quarn"
        quarn.make_file(self.started.home / "song.mp3")

    def start(self, **environment):
        return self.started.start([str(self.package.launcher)], XDG_DATA_HOME=str(self.work.parent),
                                  **environment)

    def renew_package(self):
        """Gives each program and module another file, as an upgrade does."""
        for file in self.package.programs.rglob("*"):
            if file.is_file():
                new = file.with_name(file.name + ".new")
                shutil.copy2(file, new)
                new.rename(file)

    def test_plugins_start_from_a_home_with_blanks_and_quotes(self):
        self.work = self.base / "it's \"my $HOME\" `home`; a & b" / "quarn"
        quarn.make_file(self.started.home / "song.mp3").rename(self.started.home / "text.txt")
        self.start()
        self.started.wait_stable()
        self.started.key("down", "select")
        quarn.wait_until(lambda: self.display.client.windows("TextView"), "the window of the text")
        for pid in self.started.relatives():
            os.kill(pid, signal.SIGTERM)

    def check_modules_are_refused(self):
        """What needs the new files gives its message, nothing is done, and the program goes on."""
        self.started.key("down")
        self.started.wait_stable()
        for module, keys in (("sharing", TO_BLUETOOTH), ("extras", TO_DELETE)):
            self.started.key(*keys)
            self.started.wait_for_line(REPLACED.format(module))
            quarn.wait_until(self.started.shows_box, "the message")
            self.started.key("5")
            quarn.wait_until(lambda: not self.started.shows_box(), "the message to go")
        self.assertTrue((self.started.home / "song.mp3").exists())
        self.started.key("hash")
        self.started.wait_for_listing(self.started.home)

    def test_it_lists_the_home_of_the_user(self):
        program = self.start()
        self.assertEqual(program.listings(), [f"{program.home}/", "/"])
        self.assertIn(f"quarn: your settings are in {self.work}", program.lines)
        self.assertIn("--- read lang ok", program.lines)

    def test_second_start_shows_the_first(self):
        program = self.start()
        program.key("hide")
        program.wait_hidden()
        second = program.spawn([str(self.package.launcher)], XDG_DATA_HOME=str(self.work.parent))
        _, said = second.communicate(timeout=quarn.DEADLINE)
        self.assertEqual(second.returncode, 0, said)
        program.wait_shown()

    def test_it_starts_without_a_folder_of_the_session(self):
        self.assertTrue(self.start(XDG_RUNTIME_DIR=None, TMPDIR=str(self.base)).is_running())

    def test_plugins_have_the_settings_of_the_user(self):
        self.start()
        (self.work / "keymap.cfg").write_text("Nonsense\n")
        text = self.started.home / "a.txt"
        text.write_text("a\n")
        viewer = self.work / "plugins" / "TextView" / "TextView"
        plugin = self.started.spawn([str(viewer), "-d", str(text)])
        try:
            line = plugin.stderr.readline().decode()
        finally:
            plugin.kill()
            plugin.communicate()
        self.assertIn(f"{self.work}/keymap.cfg", line)

    def test_what_an_upgrade_brought_is_shown_once(self):
        table = (self.package.data / "mime_types.cfg").read_text()
        self.package.make_version("1.5", without=("lang/turkish.lang",),
                                  tables={"mime_types.cfg": table.replace("002 01 WEBP\n", "")})
        self.start()
        self.end()
        self.package.lay_out()
        self.start(wait=False)
        notice = self.work / ".package" / "notice"
        quarn.wait_until(lambda: (self.work / "lang" / "turkish.lang").exists(), "the upgrade")
        quarn.wait_until(lambda: not notice.exists(), "the notice to go")
        # The box of the start, which may still be on the display, is never still.
        quarn.wait_until(lambda: self.started.wait_stable() and self.started.shows_box(), "the message")

        def is_closed():
            # A window whose forerunner was killed gets the keyboard some time after it is shown.
            self.started.key("5")
            return not self.started.shows_box()

        quarn.wait_until(is_closed, "the message to go")
        self.end()
        self.start()
        self.started.list_again()
        self.assertFalse(self.started.shows_box())

    def end(self):
        self.started.kill()
        self.started.wait_end()

    def start_over_vnc(self):
        """Gives the port, and what answers at an address and a port."""
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            port = free.getsockname()[1]
        self.started.start([str(self.package.launcher), f"--vnc={port}"], wait=False,
                           XDG_DATA_HOME=str(self.work.parent), ASAN_OPTIONS=PRELOADED)

        def answer(address, port):
            try:
                with socket.create_connection((address, port), SPEAKS) as client:
                    return client.recv(4)
            except ConnectionRefusedError:
                return b""
            except (ConnectionError, TimeoutError):
                return None  # another's, who waits for something else

        quarn.wait_until(lambda: answer("127.0.0.1", port) == b"RFB ", "the server")
        return port, answer

    def test_over_vnc_only_this_machine_reaches_it(self):
        port, answer = self.start_over_vnc()
        # All of 127.0.0.0/8 is this machine; a server that listens everywhere is there on each of them.
        self.assertEqual(answer("127.0.0.2", port), b"")

    def test_over_vnc_a_port_that_is_taken_is_told(self):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            program = self.started.spawn([str(self.package.launcher), f"--vnc={taken.getsockname()[1]}"],
                                         XDG_DATA_HOME=str(self.work.parent), ASAN_OPTIONS=PRELOADED)
            _, said = program.communicate(timeout=quarn.DEADLINE)
        line = said.decode().splitlines()[-1]
        self.assertEqual(program.returncode, 1)
        self.assertIn("quarn: no display: QVncServer could not connect", line)

    def test_over_vnc_a_plugin_has_a_port_of_its_own_and_the_screen_says_which(self):
        (self.started.home / "song.mp3").unlink()
        (self.started.home / "text.txt").write_text("A text.\n")
        port, answer = self.start_over_vnc()
        client = rfbclient.Client("127.0.0.1", port)
        self.addCleanup(client.close)

        def box_stands():
            """A message; one that moves while something is done is another picture each time."""
            before = client.picture()
            time.sleep(MOVES)  # waits: what moves does so within this time
            now = client.picture()
            return (before.tobytes() == now.tobytes() and wayland.screen_in(now) is not None
                    and wayland.shows_box(now) and now)

        def is_listed():
            picture = client.picture()
            return (len(self.started.listings()) >= 2 and wayland.screen_in(picture) is not None
                    and not wayland.shows_box(picture))

        quarn.wait_until(is_listed, "the end of the start")
        client.press(DOWN, RETURN)
        own = quarn.wait_until(lambda: [number for number in range(port + 1, port + 101)
                                        if answer("127.0.0.1", number) == b"RFB "], "the plugin's server")
        self.assertEqual(answer("127.0.0.2", own[0]), b"")
        viewer = rfbclient.Client("127.0.0.1", own[0])
        self.addCleanup(viewer.close)
        quarn.wait_until(lambda: viewer.picture().getbbox() is not None, "the plugin's window")
        message = quarn.wait_until(box_stands, "the message")
        if PICTURES:
            message.save(f"{PICTURES}/vnc-port.png")
            viewer.picture().save(f"{PICTURES}/vnc-plugin.png")
        client.press(ord("5"))
        quarn.wait_until(is_listed, "the message to go")
        for pid in self.started.relatives():
            os.kill(pid, signal.SIGTERM)

    def test_without_a_display_it_says_one_line(self):
        for number, (environment, words) in enumerate((
                ({"DISPLAY": ":nowhere"}, "could not connect to display :nowhere"),
                ({"DISPLAY": None, "QT_QPA_PLATFORM": "linuxfb:fb=/dev/null"}, "fixed information"),
                ({"QT_QPA_PLATFORM": "stone"}, '"stone"'),
                ({"DISPLAY": None, "QT_QPA_PLATFORM": "wayland", "WAYLAND_DISPLAY": "nowhere"},
                 "wl_display"))):
            with self.subTest(environment=environment):
                program = self.started.spawn([str(self.package.launcher)],
                                             XDG_DATA_HOME=str(self.base / f"data{number}"), **environment)
                _, said = program.communicate(timeout=quarn.DEADLINE)
                lines = [line for line in said.decode().splitlines()
                         if not line.startswith("quarn: your settings are in ")]
                self.assertEqual((program.returncode, len(lines)), (1, 1), lines)
                self.assertIn("quarn: no display: ", lines[0])
                self.assertIn(words, lines[0])

    def test_package_is_renewed_while_the_program_runs(self):
        self.start()
        self.renew_package()
        self.check_modules_are_refused()

    def test_package_is_taken_away_while_the_program_runs(self):
        self.start()
        shutil.rmtree(self.package.prefix)
        self.check_modules_are_refused()


if __name__ == "__main__":
    quarn.main()
