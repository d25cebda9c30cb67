#!/usr/bin/env python3
"""The launcher with homes, folders and names where something is in the way."""

import errno
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from installation import Package, User, replace
from launching import AS_USER, BLANKS_AND_QUOTES, LauncherTest


class BadPlaces(LauncherTest):
    def fails(self, *words, user=None, **options):
        """Expects one line, with these words, and no program."""
        status, output, said = (user or self.user).start(self.package.launcher, **options)
        self.assertEqual((status, output, len(said)), (1, [], 1), said)
        for word in words:
            self.assertIn(word, said[0])

    def lasts_for_the_session(self, *words, **options):
        """Expects one line and a work folder among what goes with the session."""
        called, said = self.start(**options)
        self.assertEqual(called, f"{self.user.runtime}/quarn/quarn")
        self.assertEqual(len(said), 1, said)
        for word in ("last until you log out", *words):
            self.assertIn(word, said[0])

    def read_only(self, folder, recursive=False):
        subprocess.run(["chmod", *(["-R"] if recursive else []), "a-w", folder], check=True)

    def test_home_that_is_read_only(self):
        self.read_only(self.user.home)
        self.lasts_for_the_session(".local", "Permission denied", prefix=AS_USER)

    def test_home_that_is_read_only_without_a_session(self):
        self.read_only(self.user.home)
        self.fails("Permission denied", prefix=AS_USER, XDG_RUNTIME_DIR=None)
        self.assertEqual(list(self.user.home.iterdir()), [])

    def test_work_folder_that_is_read_only_serves_as_it_is(self):
        self.start()
        self.read_only(self.user.home, recursive=True)
        called, said = self.start(prefix=AS_USER)
        self.assertEqual((called, said), (f"{self.user.work}/quarn", []))

    def test_work_folder_that_is_read_only_serves_after_an_upgrade(self):
        self.start()
        self.package.make_version("1.7", tables={"mime_types.cfg": "001 02 TXT\n"})
        self.read_only(self.user.home, recursive=True)
        before = self.everything()
        called, said = self.start(prefix=AS_USER)
        self.assertEqual(called, f"{self.user.work}/quarn")
        self.assertEqual(len(said), 1)
        self.assertIn("stays as it is", said[0])
        self.assertEqual(self.everything(), before)

    def faults(self, call="write", error=errno.ENOSPC, bytes_before=0):
        return {"LD_PRELOAD": os.environ["QUARN_FAULT_LIBRARY"],
                "QUARN_FAULTS": f"{call} {error} {bytes_before} {self.user.home}/"}

    def test_home_that_is_full(self):
        self.lasts_for_the_session("No space left on device", **self.faults())

    def test_home_that_gets_full_is_made_whole_when_there_is_room(self):
        for room in (0, 100, 1000, 3000):
            self.start(**self.faults(bytes_before=room))
        _, said = self.start()
        self.assertEqual(said, [f"quarn: your settings are in {self.user.work}"])
        for name in ("fm_plugins.cfg", "keymap.cfg", "mime_types.cfg"):
            self.assertEqual((self.user.work / name).read_text(), (self.package.data / name).read_text())
        self.assertEqual(self.setting("Work_folder"), f"{self.user.work}/")

    def test_home_that_is_full_at_an_upgrade_loses_nothing(self):
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        before = (self.user.work / "mime_types.cfg").read_text()
        self.package.make_version("1.7", tables={"mime_types.cfg": "001 02 TXT\n"})
        called, said = self.start(**self.faults())
        self.assertEqual(called, f"{self.user.work}/quarn")
        self.assertEqual(len(said), 1)
        self.assertEqual(self.setting("Language"), "german")
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), before)
        self.start()
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), "001 02 TXT\n")

    def bookmarks(self):
        return (self.user.work / "bookmark.cfg").read_text()

    def test_bookmarks_made_while_home_was_full_are_kept_when_there_is_room(self):
        self.lasts_for_the_session(**self.faults())
        session = self.user.runtime / "quarn"
        (session / "bookmark.cfg").write_text("\na b\n/a b\nc\n/c")
        _, said = self.start()
        self.assertIn("quarn: added the bookmarks of this session to yours", said)
        self.assertEqual(self.bookmarks(), "\na b\n/a b\nc\n/c")
        self.assertFalse((session / "bookmark.cfg").exists())
        self.assertEqual(self.start()[1], [])
        # With those that are there already, each once.
        (session / "bookmark.cfg").write_text("c\n/c\n\nd\n/d\n")
        (self.user.work / "bookmark.cfg").write_text("x\n/x\nc\n/c\n")
        self.start()
        self.assertEqual(self.bookmarks(), "x\n/x\nc\n/c\nd\n/d")

    def test_bookmarks_of_a_session_stay_there_while_home_is_full(self):
        self.start()
        (self.user.work / "bookmark.cfg").write_text("x\n/x")
        session = self.user.runtime / "quarn"
        session.mkdir()
        (session / "bookmark.cfg").write_text("\nd\n/d")
        _, said = self.start(**self.faults())
        self.assertEqual(len(said), 1, said)
        self.assertIn("stay in", said[0])
        self.assertEqual((self.bookmarks(), (session / "bookmark.cfg").read_text()), ("x\n/x", "\nd\n/d"))
        self.assertFalse((self.user.work / "bookmark.cfg.new").exists())

    def test_home_on_another_file_system(self):
        with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
            elsewhere = User(folder)
            self.assertEqual(self.start(user=elsewhere)[0], f"{elsewhere.work}/quarn")
            self.assertEqual(self.start(user=elsewhere)[1], [])

    def test_file_system_without_links(self):
        tools = self.base / "tools"
        tools.mkdir()
        refusal = "case $3 in \"$HOME\"*) echo \"ln: Operation not permitted\" >&2; exit 1 ;; esac"
        replace(tools / "ln", f"#!/bin/sh\n{refusal}\nexec /bin/ln \"$@\"\n", 0o755)
        self.lasts_for_the_session("Operation not permitted",
                                   PATH=f"{tools}:{self.user.environment['PATH']}")

    def test_file_where_the_folder_should_be(self):
        self.user.work.parent.mkdir(parents=True)
        self.user.work.write_text("mine")
        self.lasts_for_the_session(str(self.user.work))
        self.assertEqual(self.user.work.read_text(), "mine")

    def test_no_home(self):
        self.lasts_for_the_session("HOME is not set", HOME=None)
        self.fails("HOME is not set", HOME=None, XDG_RUNTIME_DIR=None)

    def test_no_folder_of_the_session(self):
        called, said = self.start(XDG_RUNTIME_DIR=None)
        self.assertEqual((called, len(said)), (f"{self.user.work}/quarn", 1))

    def test_package_that_is_not_whole(self):
        shutil.rmtree(self.package.data / "res")
        self.fails(str(self.package.data), "install the package again")

    def test_home_with_blanks_and_quotes_has_a_name_without_for_the_program(self):
        odd = User(self.base, BLANKS_AND_QUOTES)
        called, said = self.start(user=odd)
        place = f"{odd.runtime}/quarn-work"
        self.assertEqual(called, f"{place}/quarn")
        self.assertEqual(said, [f"quarn: your settings are in {odd.work}"])
        self.assertEqual(self.setting("Work_folder", odd), f"{place}/")
        self.assertEqual(self.setting("Start_path_tab1", odd), f"{odd.home}/")
        self.assertEqual(self.start(user=odd)[1], [])

    def test_name_without_blanks_is_made_anew_in_each_session(self):
        odd = User(self.base, BLANKS_AND_QUOTES)
        self.start(user=odd)
        other = User(self.base, "other").runtime
        called, said = self.start(user=odd, XDG_RUNTIME_DIR=other)
        self.assertEqual((called, said), (f"{other}/quarn-work/quarn", []))
        self.assertEqual(self.setting("Work_folder", odd), f"{other}/quarn-work/")

    def test_home_with_blanks_and_no_folder_of_the_session(self):
        odd = User(self.base, BLANKS_AND_QUOTES)
        self.package.change_launcher("own=/tmp/quarn-", f"own={self.base}/quarn-")
        called, _ = self.start(user=odd, XDG_RUNTIME_DIR=None)
        place = self.base / f"quarn-{os.geteuid()}"
        self.assertEqual(called, f"{place}/quarn-work/quarn")
        self.assertEqual(place.stat().st_mode & 0o777, 0o700)

    def test_home_with_a_line_break(self):
        odd = User(self.base, "a\nb")
        self.assertEqual(self.start(user=odd)[0], f"{odd.runtime}/quarn-work/quarn")
        self.assertEqual(self.setting("Start_path_tab1", odd), "/")
        self.assertEqual(self.start(user=odd)[1], [])

    def test_launcher_that_is_called_through_a_link(self):
        link = self.base / "somewhere" / "q"
        link.parent.mkdir()
        link.symlink_to("../usr/bin/quarn")
        self.assertEqual(self.start(launcher=link)[0], f"{self.user.work}/quarn")

    def test_link_of_another_name_starts_the_program(self):
        link = self.base / "quarn-of-mine"
        link.symlink_to(self.package.launcher)
        self.assertEqual(self.start(launcher=link)[0], f"{self.user.work}/quarn")

    def test_launcher_in_a_folder_with_blanks_and_quotes(self):
        package = Package(self.original, self.base / BLANKS_AND_QUOTES)
        self.assertEqual(self.start(launcher=package.launcher)[0], f"{self.user.work}/quarn")

    def test_two_users_have_a_folder_each(self):
        other = User(self.base, "other")
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        self.start(user=other)
        self.assertEqual(self.setting("Language", other), "english")
        self.assertEqual(self.setting("Work_folder", other), f"{other.work}/")
        self.assertEqual(self.setting("Language"), "german")


if __name__ == "__main__":
    sys.exit(unittest.main())
