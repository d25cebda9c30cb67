#!/usr/bin/env python3
"""What the launcher does with the user's work folder when the package is another version than before."""

import os
import shutil
import sys
import unittest

from installation import STAND_IN, Package, replace
from launching import LauncherTest


class Upgrade(LauncherTest):
    def setUp(self):
        super().setUp()
        self.table = (self.package.data / "mime_types.cfg").read_text()
        self.older = self.table.replace("002 01 WEBP\n", "")
        self.package.make_version("1.5", without=("lang/turkish.lang", "plugins/PicView/PicView"),
                                  tables={"mime_types.cfg": self.older})

    def upgrade(self):
        self.package.lay_out()
        return self.start()[1]

    def test_what_is_new_is_added_and_told_once(self):
        self.start()
        said = self.upgrade()
        for path in ("lang/turkish.lang", "plugins/PicView/PicView"):
            self.assertTrue((self.user.work / path).exists(), path)
        self.assertEqual(len(said), 1)
        self.assertIn("is for version 1.6 now; new: plugins/PicView/PicView lang/turkish.lang", said[0])
        self.assertEqual(self.start()[1], [])

    def test_one_that_cannot_be_ended_keeps_no_later_start_waiting(self):
        self.start()
        shutil.rmtree(self.user.work / "lang")
        (self.user.work / "lang").write_text("a file of the user")
        self.package.lay_out()
        replace(self.package.programs / "quarn",
                "#!/bin/sh\nfor each in /proc/$$/fd/*; do readlink \"$each\"; done | grep -c /lock\n")
        _, output, said = self.user.start(self.package.launcher)
        self.assertEqual((output, len(said)), (["0"], 1), said)

    def notice(self):
        """What is left for the program to tell."""
        return (self.user.work / ".package" / "notice").read_text().splitlines()

    def tell_notice_file(self):
        """The program says on stderr which file it is told to show."""
        replace(self.package.programs / "quarn", STAND_IN + "echo \"tells: ${QUARN_NOTICE-nothing}\" >&2\n")

    def test_what_is_new_is_left_for_the_program_to_tell(self):
        self.start()
        self.package.lay_out()
        self.tell_notice_file()
        self.assertEqual(self.start()[1][-1], f"tells: {self.user.work}/.package/notice")
        self.assertEqual(self.notice(), ["version 1.6", f"folder {self.package.data}",
                                         "new plugins/PicView/PicView", "new lang/turkish.lang",
                                         "renewed mime_types.cfg"])

    def test_without_an_upgrade_there_is_nothing_to_tell(self):
        self.tell_notice_file()
        for _ in range(2):
            self.assertEqual(self.start()[1][-1], "tells: nothing")
        (self.user.work / "lang" / "german.lang").unlink()
        (self.user.work / "lang" / "german.lang").symlink_to(self.package.data / "lang" / "old")
        self.assertEqual(self.start()[1][-1], "tells: nothing")

    def test_two_upgrades_that_nobody_has_seen_are_both_told(self):
        self.start()
        self.upgrade()
        self.package.make_version("1.7", tables={"mime_types.cfg": self.older})
        self.start()
        self.assertEqual(self.notice()[-3:], ["version 1.7", f"folder {self.package.data}",
                                              "renewed mime_types.cfg"])
        self.assertIn("new lang/turkish.lang", self.notice())

    def test_settings_that_are_new_are_named_and_those_taken_away_are_not(self):
        settings = (self.package.data / "fm.cfg").read_text()
        self.package.make_version("1.5", tables={"fm.cfg": settings.replace("Motion = 1\n", "")})
        self.start()
        self.edit("fm.cfg", "Theme = 0\n", "")
        self.edit("fm.cfg", "Language = english", "Language = german")
        self.upgrade()
        named = [line for line in self.notice() if line.partition(" ")[0] in ("setting", "kept")]
        self.assertEqual(named, ["setting Motion", "kept fm.cfg"])

    def test_table_that_nobody_changed_is_renewed(self):
        self.start()
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), self.older)
        self.assertIn("renewed: mime_types.cfg", self.upgrade()[0])
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), self.table)

    def test_table_that_the_user_keeps_elsewhere_stays_a_link(self):
        self.start()
        elsewhere = self.base / "mime_types.cfg"
        table = self.user.work / "mime_types.cfg"
        os.rename(table, elsewhere)
        table.symlink_to(elsewhere)
        before = elsewhere.read_text()
        self.upgrade()
        self.assertEqual((os.readlink(table), elsewhere.read_text()), (str(elsewhere), before))

    def test_table_that_the_user_changed_stays_and_the_new_one_is_named(self):
        self.start()
        self.edit("mime_types.cfg", "002 01 JPG\n", "002 09 JPG\n")
        before = (self.user.work / "mime_types.cfg").read_text()
        said = self.upgrade()
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), before)
        self.assertIn(f"yours stays, the new one is in {self.package.data}: mime_types.cfg", said[0])

    def test_settings_that_the_user_changed_stay(self):
        self.start()
        self.edit("fm.cfg", "Theme = 0", "Theme = 1")
        (self.user.work / "bookmark.cfg").write_text("a\n/a\n")
        said = self.upgrade()
        self.assertEqual(self.setting("Theme"), "1")
        self.assertEqual((self.user.work / "bookmark.cfg").read_text(), "a\n/a\n")
        # The package has the same settings as before, so there is none to look at.
        self.assertNotIn("fm.cfg", said[0])

    def test_what_the_user_took_away_stays_away(self):
        self.start()
        (self.user.work / "lang" / "german.lang").unlink()
        self.upgrade()
        self.assertFalse((self.user.work / "lang" / "german.lang").is_symlink())

    def test_what_the_user_put_in_place_of_a_link_stays(self):
        self.start()
        mine = {"lang/german.lang": "[Language]\nOPEN = Auf\n", "plugins/TextView/TextView": STAND_IN}
        for path, text in mine.items():
            (self.user.work / path).unlink()
            (self.user.work / path).write_text(text)
        icon = self.user.work / "plugins/TextView/icon.png"
        icon.unlink()
        icon.symlink_to("/media/card/icon.png")
        self.upgrade()
        for path, text in mine.items():
            self.assertEqual((self.user.work / path).read_text(), text)
        self.assertEqual(os.readlink(icon), "/media/card/icon.png")

    def test_links_to_what_is_no_longer_there_go(self):
        self.package.lay_out()
        self.start()
        self.package.make_version("1.7", without=("lang/polish.lang", "plugins/PicView/PicView"))
        self.start()
        for path in ("lang/polish.lang", "plugins/PicView/PicView"):
            self.assertFalse((self.user.work / path).is_symlink(), path)

    def test_program_that_was_moved_is_found_again(self):
        self.start()
        (self.user.work / "lang" / "german.lang").unlink()
        elsewhere = Package(self.original, self.base / "local")
        shutil.rmtree(self.package.prefix)
        _, said = self.start(launcher=elsewhere.launcher)
        self.assertEqual(len(said), 1)
        self.assertEqual(os.readlink(self.user.work / "quarn"), f"{elsewhere.programs}/quarn")
        links = [path for path in self.user.work.rglob("*") if path.is_symlink()]
        self.assertEqual([str(path) for path in links if not path.exists()], [])
        self.assertFalse((self.user.work / "lang" / "german.lang").exists())

    def test_older_version_again_keeps_what_the_user_changed(self):
        self.package.lay_out()
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        self.package.make_version("1.4", tables={"mime_types.cfg": self.older})
        self.start()
        self.assertEqual(self.setting("Language"), "german")
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), self.older)


if __name__ == "__main__":
    sys.exit(unittest.main())
