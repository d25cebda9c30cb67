#!/usr/bin/python3
"""What an installation tells the desktop, the reader of manuals and the shell, as their own tools read
it."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from PIL import Image

from installation import User, installed


def setUpModule():
    global scratch, prefix
    scratch = pathlib.Path(tempfile.mkdtemp(prefix="qm"))
    unittest.addModuleCleanup(shutil.rmtree, scratch)
    prefix = installed(scratch / "usr")


def run(*command, **options):
    """(status, output) of a command."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, text=True,
                          stderr=subprocess.STDOUT, check=False, **options)
    return done.returncode, done.stdout


class Desktop(unittest.TestCase):
    desktop_file = "share/applications/quarn.desktop"

    def test_desktop_file_is_valid(self):
        self.assertEqual(run("desktop-file-validate", prefix / self.desktop_file), (0, ""))

    def test_desktop_file_names_what_is_installed(self):
        text = (prefix / self.desktop_file).read_text()
        command = re.search("^Exec=(.*)$", text, re.MULTILINE)[1]
        icon = re.search("^Icon=(.*)$", text, re.MULTILINE)[1]
        self.assertTrue(os.access(prefix / "bin" / command, os.X_OK))
        self.assertTrue((prefix / "share/icons/hicolor/scalable/apps" / f"{icon}.svg").exists())

    def test_metadata_are_valid(self):
        found = list((prefix / "share/metainfo").iterdir())
        self.assertEqual(len(found), 1)
        status, output = run("appstreamcli", "validate", "--no-net", found[0])
        self.assertEqual(status, 0, output)
        self.assertNotRegex(output, "(?m)^[EW]:")

    def test_metadata_tell_what_suits_the_program(self):
        text = next((prefix / "share/metainfo").iterdir()).read_text()
        self.assertIn('<display_length compare="ge">240</display_length>', text)
        for control in ("keyboard", "touch"):
            self.assertIn(f"<control>{control}</control>", text)
        version = run(prefix / "bin/quarn", "--version")[1].split()[1]
        self.assertIn(f'<release version="{version}"', text)

    def test_metadata_and_desktop_file_make_one_entry(self):
        """As a software centre puts them together."""
        text = next((prefix / "share/metainfo").iterdir()).read_text()
        launched = re.search('<launchable type="desktop-id">(.*)</launchable>', text)[1]
        self.assertTrue((prefix / "share/applications" / launched).exists())
        for program in re.findall("<binary>(.*)</binary>", text):
            self.assertTrue(os.access(prefix / "bin" / program, os.X_OK), program)

    def test_icons_have_the_sizes_of_the_theme(self):
        sizes = set()
        for icon in (prefix / "share/icons/hicolor").glob("*/apps/quarn.png"):
            with Image.open(icon) as picture:
                size = picture.size
                self.assertIsNotNone(picture.convert("RGBA").getbbox(), icon)
            self.assertEqual(icon.parent.parent.name, f"{size[0]}x{size[1]}")
            sizes.add(size[0])
        self.assertEqual(sizes, {16, 22, 24, 32, 48, 64, 96, 128, 256})


class Manuals(unittest.TestCase):
    def test_each_program_has_one_without_warnings(self):
        programs = sorted(path.name for path in (prefix / "bin").iterdir())
        self.assertGreaterEqual(len(programs), 3)
        for program in programs:
            page = prefix / "share/man/man1" / f"{program}.1"
            self.assertTrue(page.exists(), f"no manual of {program}")
            self.assertEqual(run("mandoc", "-T", "lint", "-W", "warning", page), (0, ""))
            status, text = run("man", "--warnings", "-l", page,
                               env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80"})
            self.assertEqual(status, 0)
            self.assertNotIn("warning", text)
            self.assertIn(f"{program} — ", re.sub(".\b", "", text))

    def test_they_name_the_files_of_a_work_folder(self):
        text = (prefix / "share/man/man1/quarn.1").read_text()
        for name in ("fm.cfg", "keymap.cfg", "mime_types.cfg", "fm_plugins.cfg"):
            self.assertIn(name, text)


class Completion(unittest.TestCase):
    def complete(self, *words):
        """What bash offers for the last of these words."""
        script = ('source "$1"; shift; COMP_WORDS=(qcop "$@"); COMP_CWORD=$#; _qcop; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        file = prefix / "share/bash-completion/completions/qcop"
        status, output = run("bash", "-c", script, "-", file, *words, env=self.user.environment)
        self.assertEqual(status, 0, output)
        return sorted(output.split())

    def setUp(self):
        self.user = User(scratch, self.id())

    def test_commands(self):
        self.assertEqual(self.complete(""), ["listen", "registered", "send"])
        self.assertEqual(self.complete("s"), ["send"])

    def test_they_are_those_of_the_program(self):
        usage = run(prefix / "bin/qcop")[1]
        self.assertEqual(self.complete(""), sorted(re.findall(r"qcop (\w+)", usage)))

    def test_channels_that_are_there(self):
        listening = subprocess.Popen([prefix / "bin/qcop", "listen", "Trial"],
                                     env=self.user.environment)
        try:
            while run(prefix / "bin/qcop", "registered", "Trial", env=self.user.environment)[0]:
                self.assertIsNone(listening.poll())
            self.assertEqual(self.complete("send", ""), ["Trial"])
            self.assertEqual(self.complete("send", "X"), [])
        finally:
            listening.terminate()
            listening.wait()

    def test_messages_of_the_programs(self):
        self.assertEqual(self.complete("send", "Quarn", ""), ["show()"])
        self.assertEqual(self.complete("send", "LyraPlayer", "n"), ["next"])
        self.assertEqual(self.complete("listen", "LyraPlayer", "n"), [])


if __name__ == "__main__":
    sys.exit(unittest.main())
