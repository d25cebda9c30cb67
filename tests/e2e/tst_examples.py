#!/usr/bin/python3
"""The examples of plugins: built and installed as docs/plugins.md says, and picked in the file manager
by keys. With --renew the pictures of the page are made anew: look at each of them before they are
kept."""

import atexit
import functools
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time

import album
import quarn
import tst_plugins

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
TREE = pathlib.Path(os.environ.get("QUARN_TREE", ROOT / "build" / "release"))
PAGE = (ROOT / "docs" / "plugins.md").read_text()


def blocks_of_code():
    """The indented texts of the page, without their indentation."""
    for block in re.findall(r"(?:^ {4,}\S.*\n)+", PAGE, re.MULTILINE):
        indent = re.match(" +", block)[0]
        yield re.sub(f"^{indent}", "", block, flags=re.MULTILINE)


def commands(name):
    """What the page says to build an example with."""
    block, = (block for block in blocks_of_code() if f"-S examples/plugins/{name} " in block)
    return block


def script():
    block, = (block for block in blocks_of_code() if block.startswith("#!/bin/sh\n"))
    return block


@functools.cache
def built(name):
    """An example that has been built by the page's own commands, but in a folder of the test. Gives the
    program."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="qx"))
    atexit.register(shutil.rmtree, folder, True)
    lines = commands(name).replace(f"build/{name}", f"'{folder}'") \
        .replace("$PWD/build/release", f"'{TREE}'")
    done = subprocess.run(["sh", "-e", "-c", lines], cwd=ROOT, text=True, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if done.returncode != 0:
        raise quarn.Failure(done.stdout)
    return folder / name.capitalize()


class Case(album.Page):
    def install(self, program, plugin, name):
        """As the page says, for files that end in the plugin's name."""
        target = program.stage / "plugins" / name / name
        target.parent.mkdir()
        shutil.copy(plugin, target)
        for table, line in (("fm_plugins.cfg", "07 0 Stamp\n"),
                            ("mime_types.cfg", "001 07 STAMP\n")):
            self.assertIn(line, list(blocks_of_code()))
            with open(program.stage / table, "a", encoding="utf-8") as file:
                file.write(line.replace("Stamp", name).replace("STAMP", name.upper()))

    def picked(self, plugin, name, content):
        """The file manager after Return on a file of the plugin's kind, and the file."""
        program = self.program(extras=self.extras)
        self.install(program, plugin, name)
        file = quarn.make_file(program.home / f"a.{name.lower()}", content)
        program.start()
        program.key("down", "select")
        return program, file


class TestExamples(Case):
    def test_theScriptSetsTheTime(self):
        folder = self.scratch()
        stamp = folder / "Stamp"
        stamp.write_text(script())
        stamp.chmod(0o755)
        self.assertEqual(self.status_of(stamp, "a"), 2)
        _, file = self.picked(stamp, "Stamp", b"text")
        # The file was made with a day of long ago.
        quarn.wait_until(lambda: file.stat().st_mtime > time.time() - 86400, "another time")

    def test_keepPutsACopyBesideTheFile(self):
        keep = built("keep")
        _, file = self.picked(keep, "Keep", b"text")
        copy = file.with_name("a.keep.kept")
        quarn.wait_until(lambda: copy.exists() and copy.read_bytes() == b"text", "the copy")
        self.assertEqual(self.status_of(keep, "-d", file), 1)
        self.assertEqual(self.status_of(keep, file), 2)
        copy.unlink()
        self.assertEqual(self.status_of(keep, "-d", file), 0)

    @staticmethod
    def status_of(*command):
        return subprocess.run(command, stderr=subprocess.DEVNULL, check=False).returncode


class Facts(Case):
    def test_factsHasAWindowOfThePlatform(self):
        program, file = self.picked(built("facts"), "Facts", b"two words\n" * 600)
        window = tst_plugins.Plugin(program, "Facts")
        self.document("facts", window)
        before = window.wait_stable()
        file.write_bytes(b"now\nthree lines\n5 words in all\n")
        window.key("softleft")
        window.wait_change(before)
        window.end()


album.in_both_themes(Facts)

if __name__ == "__main__":
    album.main()
