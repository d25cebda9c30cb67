"""Starts of the launcher of an installed package, by users. The program itself is a stand-in."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from installation import Package, User, installed, quarn

BLANKS_AND_QUOTES = "it's \"a\" $HOME `b`;c & d"
AS_USER = quarn.WITHOUT_ROOT_POWERS if os.geteuid() == 0 else []


class LauncherTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = pathlib.Path(tempfile.mkdtemp(prefix="ql"))
        cls.addClassCleanup(shutil.rmtree, cls.scratch)
        cls.original = installed(cls.scratch / "original")

    def setUp(self):
        self.base = pathlib.Path(tempfile.mkdtemp(prefix="t", dir=self.scratch))
        self.addCleanup(self.clean)
        self.package = Package(self.original, self.base / "usr")
        self.user = User(self.base)

    def clean(self):
        subprocess.run(["chmod", "-R", "u+rwX", self.base], check=True)
        shutil.rmtree(self.base)

    def start(self, *arguments, user=None, launcher=None, **options):
        """Starts the launcher and expects that the program is started; gives what it was called by,
        and the lines that were said."""
        user = user or self.user
        status, output, said = user.start(launcher or self.package.launcher, *arguments, **options)
        self.assertEqual((status, output[1:]), (0, list(arguments)), said)
        return output[0], said

    def setting(self, key, user=None):
        lines = (user or self.user).work.joinpath("fm.cfg").read_text().splitlines()
        return next(line.partition(" = ")[2] for line in lines if line.startswith(key + " = "))

    def edit(self, name, old, new):
        file = self.user.work / name
        text = file.read_text()
        self.assertIn(old, text)
        file.write_text(text.replace(old, new))

    def everything(self, folder=None):
        """Each path of the work folder, with what is in it or where it leads to."""
        folder = folder or self.user.work
        return {str(path.relative_to(folder)): os.readlink(path) if path.is_symlink()
                else path.read_bytes() for path in folder.rglob("*")
                if path.is_symlink() or path.is_file()}
