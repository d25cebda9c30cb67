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
        self.assertIn("<keyword>keypad</keyword>", text)
        version = run(prefix / "bin/quarn", "--version")[1].split()[1]
        self.assertIn(f'<release version="{version}"', text)

    def test_metadata_and_desktop_file_make_one_entry(self):
        """As a software centre puts them together."""
        text = next((prefix / "share/metainfo").iterdir()).read_text()
        launched = re.search('<launchable type="desktop-id">(.*)</launchable>', text)[1]
        self.assertTrue((prefix / "share/applications" / launched).exists())
        provided = re.findall("<binary>(.*)</binary>", text)
        self.assertEqual(sorted(provided), sorted(path.name for path in (prefix / "bin").iterdir()))
        for program in provided:
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

    def test_each_is_named_by_another(self):
        pages = {page.stem: page.read_text() for page in (prefix / "share/man/man1").iterdir()}
        for program in pages:
            self.assertTrue([name for name, text in pages.items()
                             if name != program and f".Xr {program} 1" in text.partition(".Sh SEE ALSO")[2]], program)

    def test_they_name_the_files_of_a_work_folder(self):
        text = (prefix / "share/man/man1/quarn.1").read_text()
        for name in ("fm.cfg", "keymap.cfg", "mime_types.cfg", "fm_plugins.cfg"):
            self.assertIn(name, text)


class Pages(unittest.TestCase):
    folder = "share/doc/quarn"

    def test_each_link_leads_to_what_is_installed(self):
        followed = set()
        for page in (prefix / self.folder).rglob("*.md"):
            for link in re.findall(r"\]\(([^)#]+)", page.read_text()):
                if "://" not in link:
                    target = (page.parent / link).resolve()
                    self.assertTrue(target.is_file(), f"{page.name}: {link}")
                    self.assertTrue(target.is_relative_to((prefix / self.folder).resolve()), link)
                    followed.add(target.suffix)
        self.assertGreaterEqual(followed, {".md", ".png", ".cpp"})

    def test_all_are_there(self):
        root = pathlib.Path(__file__).resolve().parent.parent.parent
        for page in (*root.glob("*.md"), *root.glob("docs/*.md"), root / "LICENSE"):
            installed_page = prefix / self.folder / page.relative_to(root)
            self.assertEqual(installed_page.read_bytes(), page.read_bytes())

    def test_examples_that_the_pages_name_are_beside_them(self):
        for example in ("profile.sh", "quarn-console.service", "quarn-vnc.service", "keymaps/handheld.cfg",
                        "plugins/keep/CMakeLists.txt"):
            self.assertTrue((prefix / self.folder / "examples" / example).is_file(), example)


class StartingWithTheDevice(unittest.TestCase):
    examples = "share/doc/quarn/examples"

    def units(self):
        units = sorted((prefix / self.examples).glob("*.service"))
        self.assertEqual(len(units), 2)
        return units

    def test_units_are_valid(self):
        folder = pathlib.Path(tempfile.mkdtemp(prefix="units", dir=scratch))
        for unit in self.units():
            copy = folder / unit.name
            # Here nothing is installed.
            copy.write_text(unit.read_text().replace("=/usr/bin/quarn", "=/bin/true"))
            verify = "systemd-analyze", "verify", "--man=no", "--recursive-errors=no", copy
            status, lines = run(*verify)
            # systemd before 254 does not know that key, and goes on without.
            if re.fullmatch(r".*Unknown key (name )?'RestartMode' in section .Service., ignoring\.\n", lines):
                copy.write_text(copy.read_text().replace("\nRestartMode=direct\n", "\n"))
                status, lines = run(*verify)
            self.assertEqual((status, lines), (0, ""))

    def test_console_gets_a_login_when_the_program_does_not_start(self):
        text = (prefix / self.examples / "quarn-console.service").read_text()
        unit = text.partition("[Unit]")[2].partition("[Service]")[0]
        self.assertIn("\nOnFailure=getty@tty1.service\n", unit)
        interval, burst = (int(re.search(f"\nStartLimit{key}=(\\d+)\n", unit)[1])
                           for key in ("IntervalSec", "Burst"))
        pause = int(re.search("\nRestartSec=(\\d+)\n", text)[1])
        # Starts that last some seconds are counted together, and one that cannot succeed is no more tried.
        self.assertGreater(interval, burst * (pause + 10))
        self.assertIn("\nRestartPreventExitStatus=1\n", text)
        self.assertIn("\nRestartMode=direct\n", text)

    def test_profile_starts_it_on_the_first_console_alone(self):
        profile = prefix / self.examples / "profile.sh"
        self.assertEqual(run("sh", "-n", profile), (0, ""))
        self.assertEqual(run("shellcheck", "--shell=sh", profile), (0, ""))
        tools = pathlib.Path(tempfile.mkdtemp(prefix="tools", dir=scratch))
        for name, script in (("tty", "echo $TTY"), ("quarn", "echo started $QT_QPA_PLATFORM")):
            (tools / name).write_text(f"#!/bin/sh\n{script}\n")
            (tools / name).chmod(0o755)
        for environment, said in (({"TTY": "/dev/tty1"}, "started linuxfb\n"), ({"TTY": "/dev/pts/0"}, ""),
                                  ({"TTY": "/dev/tty1", "DISPLAY": ":0"}, ""),
                                  ({"TTY": "/dev/tty1", "WAYLAND_DISPLAY": "wayland-0"}, "")):
            self.assertEqual(run("/bin/sh", profile, env={"PATH": str(tools), **environment}), (0, said))


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
