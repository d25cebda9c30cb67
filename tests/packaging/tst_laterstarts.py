#!/usr/bin/env python3
"""What the launcher does with a work folder that is there: nothing, unless something is to be mended."""

import os
import shutil
import sys
import unittest

from installation import User, replace
from launching import LauncherTest


class LaterStarts(LauncherTest):
    def test_nothing_is_said_or_written(self):
        self.start()
        before = {path: path.lstat().st_mtime_ns for path in self.user.work.rglob("*")}
        self.assertEqual(self.start()[1], [])
        self.assertEqual({path: path.lstat().st_mtime_ns for path in self.user.work.rglob("*")},
                         before)

    def test_no_process_is_started(self):
        self.start()
        replace(self.package.programs / "quarn", "#!/bin/sh\nprintf '%s\\n' \"$0\"\n")
        self.start(PATH="/nonexistent")

    def test_what_the_user_changed_stays(self):
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        self.edit("mime_types.cfg", "002 01 JPG\n", "")
        (self.user.work / "bookmark.cfg").write_text("a\n/a\n")
        (self.user.work / "lang" / "mine.lang").write_text("[Language]\n")
        before = self.everything()
        self.start()
        self.assertEqual(self.everything(), before)

    def test_what_the_user_took_away_stays_away(self):
        self.start()
        for path in ("lang/german.lang", "keymap.cfg", "plugins/Execute/Execute"):
            (self.user.work / path).unlink()
        before = self.everything()
        self.start()
        self.assertEqual(self.everything(), before)

    def test_settings_that_are_gone_come_back(self):
        self.start()
        (self.user.work / "fm.cfg").unlink()
        self.start()
        self.assertEqual(self.setting("Work_folder"), f"{self.user.work}/")

    def test_link_that_leads_nowhere_is_mended_and_told(self):
        self.start()
        link = self.user.work / "lang" / "german.lang"
        link.unlink()
        link.symlink_to(self.package.data / "lang" / "old" / "german.lang")
        _, said = self.start()
        self.assertTrue(link.exists())
        self.assertEqual(len(said), 1)
        self.assertIn("mended: lang/german.lang", said[0])
        self.assertEqual(self.start()[1], [])

    def test_users_own_link_that_leads_nowhere_stays(self):
        self.start()
        link = self.user.work / "lang" / "german.lang"
        link.unlink()
        link.symlink_to("/media/card/german.lang")
        self.start()
        self.assertEqual(os.readlink(link), "/media/card/german.lang")

    def test_settings_on_a_card_that_is_out_stay_the_users(self):
        self.start()
        settings = self.user.work / "fm.cfg"
        settings.unlink()
        settings.symlink_to("/media/card/fm.cfg")
        called, said = self.start()
        self.assertEqual(called, f"{self.user.runtime}/quarn/quarn")
        self.assertEqual(len(said), 1, said)
        self.assertIn("leads nowhere", said[0])
        self.assertEqual(os.readlink(settings), "/media/card/fm.cfg")

    def test_table_on_a_card_that_is_out_stays_the_users(self):
        self.start()
        table = self.user.work / "mime_types.cfg"
        table.unlink()
        table.symlink_to("/media/card/mime_types.cfg")
        self.package.make_version("1.7", tables={"mime_types.cfg": "001 02 TXT\n"})
        self.start()
        self.assertEqual(os.readlink(table), "/media/card/mime_types.cfg")

    def test_home_that_was_moved_is_followed(self):
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        moved = User(self.base, "moved")
        shutil.copytree(self.user.home, moved.home, symlinks=True, dirs_exist_ok=True)
        self.start(user=moved)
        self.assertEqual(self.setting("Work_folder", moved), f"{moved.work}/")
        self.assertEqual(self.setting("Language", moved), "german")

    def moved(self):
        """The user with another home, which has what was in the old one."""
        moved = User(self.base, "moved")
        shutil.copytree(self.user.home, moved.home, symlinks=True, dirs_exist_ok=True)
        return moved

    def test_first_tab_follows_a_home_that_was_moved(self):
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        moved = self.moved()
        self.start(user=moved)
        self.assertEqual(self.setting("Start_path_tab1", moved), f"{moved.home}/")
        self.assertEqual(self.start(user=moved)[1], [])

    def test_first_tab_follows_a_home_whose_settings_lie_elsewhere(self):
        data = self.base / "data"
        self.start(XDG_DATA_HOME=data)
        settings = data / "quarn" / "fm.cfg"
        settings.write_text(settings.read_text().replace("Language = english", "Language = german"))
        other = User(self.base, "other")
        self.start(user=other, XDG_DATA_HOME=data)
        self.assertIn(f"\nStart_path_tab1 = {other.home}/\n", settings.read_text())

    def test_first_tab_follows_a_home_after_a_version_that_did_not_note_it(self):
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        (self.user.work / ".package" / "home").unlink()
        moved = self.moved()
        self.start(user=moved)
        self.assertEqual(self.setting("Start_path_tab1", moved), f"{moved.home}/")

    def test_first_tab_that_the_user_chose_stays(self):
        self.start()
        self.edit("fm.cfg", f"Start_path_tab1 = {self.user.home}/", "Start_path_tab1 = /srv/")
        moved = self.moved()
        self.start(user=moved)
        self.assertEqual(self.setting("Start_path_tab1", moved), "/srv/")

    def test_settings_in_another_form_follow_a_home_that_was_moved(self):
        self.start()
        settings = self.user.work / "fm.cfg"
        before = settings.read_text()
        for old, new in ((" = ", "="), (" = ", "\t =  "), ("\n", "\r\n")):
            settings.write_bytes(before.replace(old, new).encode())
            moved = User(self.base, f"moved{ord(new[0])}{len(new)}")
            shutil.copytree(self.user.home, moved.home, symlinks=True, dirs_exist_ok=True)
            self.start(user=moved)
            text = (moved.work / "fm.cfg").read_bytes().decode()
            self.assertNotIn(f"{self.user.home}/", text)
            end = "\r\n" if "\r" in new else "\n"
            for line in (f"Work_folder = {moved.work}/", f"Start_path_tab1 = {moved.home}/"):
                self.assertIn(f"{end}{line}{end}", text)
            self.assertEqual(text.count("\r"), text.count("\n") if "\r" in new else 0)

    def test_work_folder_that_the_user_chose_stays(self):
        self.start()
        self.edit("fm.cfg", f"Work_folder = {self.user.work}/", "Work_folder = /srv/quarn/")
        moved = User(self.base, "moved")
        shutil.copytree(self.user.home, moved.home, symlinks=True, dirs_exist_ok=True)
        self.start(user=moved)
        self.assertEqual(self.setting("Work_folder", moved), "/srv/quarn/")


if __name__ == "__main__":
    sys.exit(unittest.main())
