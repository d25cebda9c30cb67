#!/usr/bin/python3
"""The installed program as its launcher starts it, on a virtual display: it lists, opens files with the
user's settings, and stands a package that is renewed or taken away while it runs."""

import os
import pathlib
import shutil
import signal
import socket
import tempfile
import unittest

from installation import Package, installed, quarn

REPLACED = "module {}: the program was replaced while it runs; start it anew"
TO_BLUETOOTH = ("softleft", *["down"] * 6, "select")
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

    def test_over_vnc_only_this_machine_reaches_it(self):
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            port = free.getsockname()[1]
        options = f"{os.environ.get('ASAN_OPTIONS', '')}:verify_asan_link_order=0"
        self.started.start([str(self.package.launcher), f"--vnc={port}"], wait=False,
                           XDG_DATA_HOME=str(self.work.parent), ASAN_OPTIONS=options)

        def answer(address):
            try:
                with socket.create_connection((address, port), quarn.DEADLINE) as client:
                    return client.recv(4)
            except ConnectionRefusedError:
                return b""

        quarn.wait_until(lambda: answer("127.0.0.1") == b"RFB ", "the server")
        # All of 127.0.0.0/8 is this machine; a server that listens everywhere is there on each of them.
        self.assertEqual(answer("127.0.0.2"), b"")

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
